// Settings changes reach the rest of the process only once the file holds them, and the file holds them whole.

#include "platform/SettingsFile.h"
#include "platform/VLSettings.h"
#include "platform/VLSettingsNotifier.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/SmallDisk.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

// Writes key=value in one format and reads it back in another. Each file is read under a name never used before:
// QSettings keeps what it last wrote to a name and would answer from that instead of the file.
QVariant throughFile(const QString &folder, QSettings::Format writeFormat, QSettings::Format readFormat,
                     const QString &key, const QVariant &value)
{
    static int files = 0;
    const QString written = folder + QStringLiteral("/w%1.ini").arg(++files);
    const QString read = folder + QStringLiteral("/r%1.ini").arg(files);
    {
        QSettings settings(written, writeFormat);
        settings.setValue(key, value);
    }
    QFile::copy(written, read);
    return QSettings(read, readFormat).value(key);
}

} // namespace

class TestVLSettings : public QObject
{
    Q_OBJECT

private slots:
    void changeSignal()
    {
        QSignalSpy spy(&VLSettingsNotifier::instance(), &VLSettingsNotifier::changed);
        VLSettings settings;
        QVERIFY(settings.setValue(QString::fromLatin1(SettingKey::showBeta), true));
        QVERIFY(settings.remove(QString::fromLatin1(SettingKey::showBeta)));
        QCOMPARE(spy.count(), 2);
        QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("showBeta"));

        // A change that cannot be written is not announced (a folder where the file belongs stops even root).
        QVERIFY(QFile::remove(settings.fileName()));
        QVERIFY(QDir().mkpath(settings.fileName()));
        QVERIFY(!VLSettings().setValue(QString::fromLatin1(SettingKey::showMAS), true));
        QVERIFY(QDir(settings.fileName()).removeRecursively());
        QCOMPARE(spy.count(), 2);
    }

    // Our INI text reads back the same in our reader and in Qt's, and Qt's INI files read the same in ours.
    void fileFormat_data()
    {
        columns<QString, QVariant, QVariant>("key", "value", "readBack"); // INI keeps no types: texts, lists, nothing

        const auto text = [](const char *utf8) { return QVariant(QString::fromUtf8(utf8)); };
        QTest::newRow("punctuation") << "k" << text("a,b;c=d \"hi\" \\x") << text("a,b;c=d \"hi\" \\x");
        const QVariant controls = text("  one\ntwo\tthree\r\x01"
                                       "a\x7f"
                                       "1 ");
        QTest::newRow("controls, outer spaces") << "k" << controls << controls;
        QTest::newRow("at signs") << "k" << text("@Invalid()") << text("@Invalid()");
        QTest::newRow("non-ASCII") << "k" << text("é日本😀") << text("é日本😀");
        QTest::newRow("empty") << "k" << text("") << text("");
        QTest::newRow("bool") << "k" << QVariant(true) << text("true");
        QTest::newRow("number") << "k" << QVariant(-1.5) << text("-1.5");
        QTest::newRow("empty list") << "k" << QVariant(QStringList()) << QVariant();
        QTest::newRow("one-item list") << "k" << QVariant(QStringList{QStringLiteral("a")}) << text("a");
        const QStringList list = {QStringLiteral("a"), QStringLiteral("b, c"), QStringLiteral(" d "), QString()};
        QTest::newRow("list") << "k" << QVariant(list) << QVariant(list);
        QTest::newRow("odd keys") << QString::fromUtf8("a key/ünï日/b") << text("v") << text("v");
        QTest::newRow("group named General") << "General/k" << text("v") << text("v");
    }

    void fileFormat()
    {
        auto [key, value, readBack] = fetch<QString, QVariant, QVariant>("key", "value", "readBack");
        QTemporaryDir dir;
        const QSettings::Format ours = SettingsFile::format();
        QCOMPARE(throughFile(dir.path(), ours, ours, key, value), readBack);
        QCOMPARE(throughFile(dir.path(), ours, QSettings::IniFormat, key, value), readBack);
        QCOMPARE(throughFile(dir.path(), QSettings::IniFormat, ours, key, value), readBack);
    }

    // Runs last: the folder is mounted over, and the settings of the earlier tests are hidden meanwhile.
    void fullDisk()
    {
        const QString folder = QFileInfo(VLSettings().fileName()).path();
        SmallDisk disk(folder);
        if (!disk.isReady()) {
            QSKIP(qPrintable(disk.skipReason()));
        }
        VLSettings settings;
        QVERIFY(settings.setValue(QString::fromLatin1(SettingKey::serviceHost), QStringLiteral("http://old:1")));
        const QByteArray before = PlistFiles::readFile(settings.fileName());
        QSignalSpy spy(&VLSettingsNotifier::instance(), &VLSettingsNotifier::changed);

        // More than the disk holds: the first write is cut short, the next one fails.
        const QString huge(int(disk.capacity()), QLatin1Char('x'));
        QVERIFY(!settings.setValue(QString::fromLatin1(SettingKey::siteHost), huge));
        QVERIFY(!settings.writeError().isEmpty());
        QCOMPARE(PlistFiles::readFile(settings.fileName()), before);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QFileInfo(settings.fileName()).fileName()});
        QCOMPARE(spy.count(), 0);
        // The change is dropped, not kept to be written by some later sync.
        QVERIFY(settings.stringValue(SettingKey::siteHost) != huge);

        QVERIFY2(settings.setValue(QString::fromLatin1(SettingKey::dealsHost), QStringLiteral("http://deals:2")),
                 qPrintable(settings.writeError()));
        QCOMPARE(VLSettings().stringValue(SettingKey::siteHost),
                 VLSettings::definition(QStringLiteral("siteHost"))->defaultValue.toString());
    }
};

VELMORA_TEST_MAIN(TestVLSettings)
#include "TestVLSettings.moc"
