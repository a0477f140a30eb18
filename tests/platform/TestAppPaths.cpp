// The private temporary folder that downloads go to: made when missing, refused when someone else could have
// planted or could enter it.

#include "platform/AppPaths.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

class TestAppPaths : public QObject
{
    Q_OBJECT

private slots:
    // Qt names no temporary folder when TMPDIR's is missing: the private one must not land in the root folder.
    void missingTmpdirGivesNoFolder()
    {
        const QByteArray saved = qgetenv("TMPDIR");
        qputenv("TMPDIR", saved + "/missing");
        QTest::ignoreMessage(QtInfoMsg, "cannot create temporary folder: TMPDIR names no folder");
        QVERIFY(AppPaths::privateTempFolder().isEmpty());
        qputenv("TMPDIR", saved);
        QVERIFY(!QFileInfo::exists(QStringLiteral("/velmora-") + QString::number(getuid())));
    }

    void privateTempFolder_data()
    {
        columns<QString, bool>("planted", "accepted");
        QTest::newRow("missing: made") << QString() << true;
        QTest::newRow("our own folder") << QStringLiteral("folder 0700") << true;
        QTest::newRow("folder others may enter") << QStringLiteral("folder 0755") << false;
        QTest::newRow("link to a folder of ours") << QStringLiteral("link") << false;
        QTest::newRow("plain file") << QStringLiteral("file") << false;
        QTest::newRow("folder of another user") << QStringLiteral("foreign") << false;
    }

    void privateTempFolder()
    {
        auto [planted, accepted] = fetch<QString, bool>("planted", "accepted");
        const QString name = AppPaths::privateTempFolderName();
        QCOMPARE(name, QDir::tempPath() + QStringLiteral("/velmora-") + QString::number(getuid()));
        const QByteArray native = QFile::encodeName(name);
        if (planted.startsWith(QLatin1String("folder")) || planted == QLatin1String("foreign")) {
            QCOMPARE(mkdir(native.constData(), planted.endsWith(QLatin1String("0755")) ? 0755 : 0700), 0);
            chmod(native.constData(), planted.endsWith(QLatin1String("0755")) ? 0755 : 0700); // past the umask
        } else if (planted == QLatin1String("link")) {
            QVERIFY(QDir().mkpath(QDir::tempPath() + QStringLiteral("/elsewhere")));
            QVERIFY(QFile::link(QDir::tempPath() + QStringLiteral("/elsewhere"), name));
        } else if (planted == QLatin1String("file")) {
            QFile file(name);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        if (planted == QLatin1String("foreign")) {
            if (getuid() != 0) {
                QSKIP("only root can give a folder to another user");
            }
            QCOMPARE(chown(native.constData(), 65534, 65534), 0);
        }

        const QString folder = AppPaths::privateTempFolder();
        QCOMPARE(folder, accepted ? name : QString());
        if (accepted) {
            struct stat info = {};
            QCOMPARE(lstat(native.constData(), &info), 0);
            QCOMPARE(info.st_mode & 0777, mode_t(0700));
        }
        QFile::remove(name);
        rmdir(native.constData());
    }
};

VELMORA_TEST_MAIN(TestAppPaths)
#include "TestAppPaths.moc"
