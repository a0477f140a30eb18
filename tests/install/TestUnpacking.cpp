// Real archives and images of an app bundle, unpacked by the installer: what lands in the work folder (links, modes,
// no __MACOSX), and archives that fail or try to write outside their folder, which must fail and write nothing.

#include "install/VLInstaller.h"
#include "support/DataTable.h"
#include "support/InstallFixtures.h"
#include "support/TestMain.h"

#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

const QStringList kApp = {
    QStringLiteral("Applications -> /"),           QStringLiteral("Foo.app/"),
    QStringLiteral("Foo.app/Contents/"),           QStringLiteral("Foo.app/Contents/Current -> MacOS"),
    QStringLiteral("Foo.app/Contents/Info.plist"), QStringLiteral("Foo.app/Contents/MacOS/"),
    QStringLiteral("Foo.app/Contents/MacOS/foo*")};

QStringList words(const QString &text)
{
    return text.split(u' ');
}

} // namespace

class TestUnpacking : public QObject
{
    Q_OBJECT

private slots:
    void unpack_data()
    {
        // recipe: the folder it runs in (src: the app tree; esc: a link "l" to the outside folder and a file "x"),
        // then the tool and its arguments; %A is the archive, %O the outside folder, a final ">" sends output to %A.
        columns<QString, QString, QStringList, bool, QStringList, QString>("op", "name", "recipe", "unpacks", "listing",
                                                                           "beside");
        const QStringList image = kApp + QStringList{QStringLiteral("__MACOSX/"), QStringLiteral("__MACOSX/._Foo.app")};
        const QString appEntries = QStringLiteral(" %A Foo.app Applications");
        QTest::newRow("zip: links, modes, no __MACOSX")
            << "zip"
            << "Foo.zip" << words(u"src bsdtar --format zip -cf"_s + appEntries + u" __MACOSX") << true << kApp << "";
        QTest::newRow("tar.gz") << "tgz"
                                << "Foo.tar.gz" << words(u"src bsdtar -czf"_s + appEntries) << true << kApp << "";
        QTest::newRow("X.TAR.GZ") << "tgz"
                                  << "X.TAR.GZ" << words(u"src bsdtar -czf"_s + appEntries) << true << kApp << "";
        QTest::newRow("tar.bz2 through x.tar")
            << "tbz"
            << "Foo.tar.bz2" << words(u"src bsdtar -cjf"_s + appEntries) << true << kApp << "Foo.tar";
        QTest::newRow("tbz through x.tar")
            << "tbz"
            << "Foo.tbz" << words(u"src bsdtar -cjf"_s + appEntries) << true << kApp << "Foo.tar";
        QTest::newRow("bz2 in place, work folder empty")
            << "bz2"
            << "Info.plist.bz2" << words(u"src bzip2 -c Foo.app/Contents/Info.plist >"_s) << true << QStringList()
            << "Info.plist";
        QTest::newRow("ISO/HFS+ image") << "dmg"
                                        << "Foo.dmg" << words(u"src xorriso -as mkisofs -hfsplus -R -V Vol -o %A ."_s)
                                        << true << image << "";
        for (const char *op : {"zip", "tgz", "tbz", "bz2", "dmg"}) {
            QTest::addRow("%s unreadable", op)
                << op << u"Foo."_s + QString::fromLatin1(op) << words(u"src garbage"_s) << false << kApp << "";
        }
        const QList<std::pair<QString, QString>> formats = {{QStringLiteral("zip"), QStringLiteral("--format zip -cf")},
                                                            {QStringLiteral("tgz"), QStringLiteral("-czf")},
                                                            {QStringLiteral("tbz"), QStringLiteral("-cjf")}};
        for (const auto &[op, format] : formats) {
            for (const char *escape : {",^x$,../evil,", ",^x$,../../evil,", ",^x$,%O/evil,", ",^x$,l/evil,"}) {
                QTest::addRow("%s %s", qPrintable(op), escape)
                    << op << u"Foo."_s + op
                    << words(QStringLiteral("esc bsdtar -P %1 %A -s %2 l x").arg(format, QString::fromLatin1(escape)))
                    << false << kApp << "";
            }
        }
    }

    void unpack()
    {
        auto [op, name, recipe, unpacks, listing, beside] =
            fetch<QString, QString, QStringList, bool, QStringList, QString>("op", "name", "recipe", "unpacks",
                                                                             "listing", "beside");
        QTemporaryDir sandbox;
        const QString downloads = sandbox.filePath(QStringLiteral("dl"));
        const QString outside = sandbox.filePath(QStringLiteral("outside"));
        const QString archive = downloads + u'/' + name;
        for (const QString &folder : {downloads, outside, sandbox.filePath(QStringLiteral("esc"))}) {
            QDir().mkpath(folder);
        }
        InstallFixtures::makeAppTree(sandbox.filePath(QStringLiteral("src")));
        QFile::link(outside, sandbox.filePath(QStringLiteral("esc/l")));
        QFile x(sandbox.filePath(QStringLiteral("esc/x")));
        QVERIFY(x.open(QIODevice::WriteOnly) && x.write("escaped") > 0);
        x.close();

        const QString folder = sandbox.filePath(recipe.takeFirst());
        const QString tool = recipe.takeFirst();
        if (tool == u"garbage") {
            QFile file(archive);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("not an archive") > 0);
        } else {
            const bool toArchive = recipe.last() == u">";
            if (toArchive) {
                recipe.removeLast();
            }
            recipe.replaceInStrings(QStringLiteral("%A"), archive).replaceInStrings(QStringLiteral("%O"), outside);
            QVERIFY(InstallFixtures::run(tool, recipe, folder, toArchive ? archive : QString()));
        }

        VLInstaller installer;
        const QString work = op == u"zip"   ? installer.extractZIP(archive)
                             : op == u"tgz" ? installer.extractTGZ(archive)
                             : op == u"tbz" ? installer.extractTBZ(archive)
                             : op == u"bz2" ? installer.extractBZ2(archive)
                                            : installer.mountDMG(archive);
        QCOMPARE(!work.isEmpty(), unpacks);
        if (unpacks) {
            QCOMPARE(InstallFixtures::describe(work), listing);
            QVERIFY(beside.isEmpty() || QFile::exists(downloads + u'/' + beside));
            installer.cleanUp(archive);
            QVERIFY(!QFile::exists(downloads));
        }
        for (const QString &escaped :
             QStringList{outside + u"/evil", downloads + u"/evil", sandbox.filePath(u"evil"_s)}) {
            QVERIFY2(!QFile::exists(escaped), qPrintable(escaped));
        }
    }
};

VELMORA_TEST_MAIN(TestUnpacking)
#include "TestUnpacking.moc"
