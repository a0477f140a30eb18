// Real archives and images of an app bundle, unpacked by the installer: what lands in the work folder (links, modes,
// no __MACOSX), and archives that fail or try to write outside their folder, which must fail and write nothing;
// archives past the bounds of their budget, holding a device, or that would ask for a password, fail at once and say
// why.

#include "install/PbzxPayload.h"
#include "install/VLInstaller.h"
#include "platform/AppPaths.h"
#include "platform/VLSettings.h"
#include "support/BundleTree.h"
#include "support/DataTable.h"
#include "support/InstallFixtures.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDataStream>
#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

static const QString kApp = u"Applications -> /Applications|Foo.app/|Foo.app/Contents/|"
                            u"Foo.app/Contents/Current -> ../Contents/MacOS|"
                            u"Foo.app/Contents/Info.plist|Foo.app/Contents/MacOS/|Foo.app/Contents/MacOS/foo*"_s;

class TestUnpacking : public QObject
{
    Q_OBJECT

private slots:
    void bounded_data()
    {
        // recipe: as for unpack, run in a folder holding "big" (20 MB of zeros), "many/" (300 empty files), "note" and
        // "dev.mtree", which describes a character device 0,0.
        columns<QString, QString, QString, qint64, qint64, qint64, QString>("op", "name", "recipe", "minBytes",
                                                                            "minEntries", "reserve", "failure");
        const qint64 mb = 1 << 20;
        const QString large = u"the archive unpacks to more than 1 MB"_s;
        row("zip bomb", u"zip"_s, u"Big.zip"_s, u"bsdtar --format zip -cf %A big"_s, mb, qint64(1000), qint64(0),
            large);
        row("tar.gz bomb", u"tgz"_s, u"Big.tar.gz"_s, u"bsdtar -czf %A big"_s, mb, qint64(1000), qint64(0), large);
        row("tar.bz2 bomb", u"tbz"_s, u"Big.tar.bz2"_s, u"bsdtar -cjf %A big"_s, mb, qint64(1000), qint64(0), large);
        row("bz2 bomb", u"bz2"_s, u"big.bz2"_s, u"bzip2 -c big >"_s, mb, qint64(1000), qint64(0), large);
        row("too many files", u"tgz"_s, u"Many.tar.gz"_s, u"bsdtar -czf %A many"_s, 64 * mb, qint64(100), qint64(0),
            u"the archive unpacks to more than 100 files"_s);
        row("no room", u"zip"_s, u"Many.zip"_s, u"bsdtar --format zip -cf %A many"_s, 64 * mb, qint64(1000),
            qint64(1) << 60, u"less than 1099511627776 MB are free in"_s);
        // udif: a compressed image of the named files; pkg: a package of them all with a gzip or pbzx payload.
        const QString larger = u"the archive unpacks to more than"_s;
        row("disk image bomb", u"dmg"_s, u"Big.dmg"_s, u"udif big"_s, mb, qint64(1000), qint64(0), large);
        row("package bomb, gzip payload", u"pkg"_s, u"Big.pkg"_s, u"pkg gzip"_s, mb, qint64(1000), qint64(0), larger);
        row("package bomb, pbzx payload", u"pkg"_s, u"Big.pkg"_s, u"pkg pbzx"_s, mb, qint64(1000), qint64(0), larger);
        for (const QString &op : {u"dmg"_s, u"pkg"_s}) {
            row(qPrintable(op + u": no room"), op, u"Many."_s + op, op == u"dmg" ? u"udif many"_s : u"pkg gzip"_s,
                64 * mb, qint64(1000), qint64(1) << 60, u"less than 1099511627776 MB are free in"_s);
        }
        row("zip holding a device", u"zip"_s, u"Dev.zip"_s, u"chr note"_s, 64 * mb, qint64(1000), qint64(0),
            u"the archive holds a device"_s);
        for (const auto &[op, name, create] :
             {std::tuple(u"tgz"_s, u"tar.gz"_s, u"-czf"_s), {u"tbz"_s, u"tar.bz2"_s, u"-cjf"_s}}) {
            row(qPrintable(name + u" holding a device"), op, u"Dev."_s + name, u"bsdtar %1 %A @dev.mtree"_s.arg(create),
                64 * mb, qint64(1000), qint64(0), u"the archive holds a device"_s);
        }
        row("password asked", u"zip"_s, u"Secret.zip"_s,
            u"bsdtar --format zip --options zip:encryption=zipcrypt --passphrase pw -cf %A note"_s, 64 * mb,
            qint64(1000), qint64(0), u"bsdtar failed with status"_s);
    }

    void bounded()
    {
        auto [op, name, recipe, minBytes, minEntries, reserve, failure] =
            fetch<QString, QString, QString, qint64, qint64, qint64, QString>("op", "name", "recipe", "minBytes",
                                                                              "minEntries", "reserve", "failure");
        QTemporaryDir sandbox(AppPaths::privateTempFolder() + u"/sandbox-XXXXXX"_s);
        const QString archive = BundleTree(sandbox.filePath(u"dl"_s)).root() + u'/' + name;
        BundleTree source(sandbox.filePath(u"src"_s));
        source.addFile(u"big"_s, QByteArray(20 << 20, '\0'));
        source.addFile(u"note"_s, "a secret");
        source.addFile(u"dev.mtree"_s, "#mtree\n./dev type=char device=native,0,0 mode=0644\n");
        for (int i = 0; i < 300; ++i) {
            source.addFile(u"many/%1"_s.arg(i), "");
        }
        QStringList args = recipe.split(u' ');
        const QString tool = args.takeFirst();
        const bool toArchive = args.last() == u">";
        if (toArchive) {
            args.removeLast();
        }
        if (tool == u"udif") {
            args = QStringList{u"-as"_s, u"mkisofs"_s, u"-R"_s, u"-o"_s, archive + u".iso"} + args;
            QVERIFY(InstallFixtures::run(u"xorriso"_s, args, source.root()));
            QVERIFY(InstallFixtures::makeUdif(archive + u".iso", archive, true));
        } else if (tool == u"chr") {
            // A zip of the file whose mode says "character device 0,0", which anyone may make on most file systems.
            QVERIFY(InstallFixtures::run(u"bsdtar"_s, {u"--format"_s, u"zip"_s, u"-cf"_s, archive, args.first()},
                                         source.root()));
            QFile zip(archive);
            QVERIFY(zip.open(QIODevice::ReadWrite));
            QByteArray bytes = zip.readAll();
            const qsizetype mode = bytes.indexOf("PK\x01\x02") + 40; // the external attributes' high half
            bytes.replace(mode, 2, QByteArray("\xa4\x21", 2));       // 020644, little-endian
            QVERIFY(zip.seek(0) && zip.write(bytes) == bytes.size());
        } else if (tool == u"pkg") {
            QVERIFY(
                InstallFixtures::makeFlatPackage(source.root(), archive, u"/Applications"_s, args.first() == u"pbzx"));
        } else {
            QVERIFY(InstallFixtures::run(tool, args.replaceInStrings(u"%A"_s, archive), source.root(),
                                         toArchive ? archive : QString()));
        }
        // Nothing may be placed: packages install under a volume root of the sandbox's own.
        QVERIFY(VLSettings().setValue(QString::fromLatin1(SettingKey::volumeRoot), sandbox.filePath(u"volume"_s)));

        VLInstaller installer;
        installer.setUnpackLimits({1, minBytes, 1 << 20, minEntries, reserve});
        const QString work = op == u"zip"   ? installer.extractZIP(archive)
                             : op == u"tgz" ? installer.extractTGZ(archive)
                             : op == u"tbz" ? installer.extractTBZ(archive)
                             : op == u"bz2" ? installer.extractBZ2(archive)
                             : op == u"dmg"
                                 ? installer.mountDMG(archive)
                                 : installer.installNewVersionFromPKG(archive, sandbox.filePath(u"Foo.app"_s));
        QVERIFY(work.isEmpty());
        QVERIFY2(installer.unpackFailure().startsWith(failure), qPrintable(installer.unpackFailure()));
    }

    void pbzxBound_data()
    {
        // payload: its stored chunks' sizes in KB, "!" for one cut short; the decoded archive may reach 64 KB.
        columns<QString, int>("payload", "decoded");
        row("within the bound", u"32|32"_s, int(PbzxPayload::Decoded::Done));
        row("past the bound", u"32|32|1"_s, int(PbzxPayload::Decoded::TooLarge));
        row("cut short", u"32|!"_s, int(PbzxPayload::Decoded::Damaged));
    }

    void pbzxBound()
    {
        auto [payload, decoded] = fetch<QString, int>("payload", "decoded");
        QByteArray pbzx("pbzx");
        QDataStream stream(&pbzx, QIODevice::Append); // big-endian, as the payload is
        stream << quint64(1 << 24);
        for (const QString &chunk : payload.split(u'|')) {
            const int size = chunk == u"!" ? 1024 : chunk.toInt() * 1024;
            stream << quint64(0) << quint64(size);
            stream.writeRawData(QByteArray(size, 'x').constData(), chunk == u"!" ? 10 : size);
        }
        QTemporaryDir sandbox;
        QVERIFY(PlistFiles::writeFile(sandbox.filePath(u"Payload"_s), pbzx));
        const QString cpio = sandbox.filePath(u"Payload.cpio"_s);
        QCOMPARE(int(PbzxPayload::decode(sandbox.filePath(u"Payload"_s), cpio, 64 * 1024)), decoded);
        QCOMPARE(QFile::exists(cpio), decoded == int(PbzxPayload::Decoded::Done));
    }

    void unpack_data()
    {
        // recipe: the folder it runs in (src: the app tree; esc: a link "l" to the outside folder and a file "x"),
        // then the tool and its arguments; %A is the archive, %O the outside folder, a final ">" sends output to %A.
        // listing: what the work folder holds ("a|b"); beside: a file left beside the download; neither: must fail.
        columns<QString, QString, QString, QString, QString>("op", "name", "recipe", "listing", "beside");
        const auto row = [](const QString &name, const QString &op, const QString &file, const QString &recipe,
                            const QString &listing, const QString &beside = {}) {
            QTest::newRow(qPrintable(name)) << op << file << recipe << listing << beside;
        };
        const QString app = u" %A Foo.app Applications"_s;
        row(u"zip: links, modes, no __MACOSX"_s, u"zip"_s, u"Foo.zip"_s,
            u"src bsdtar --format zip -cf"_s + app + u" __MACOSX", kApp);
        row(u"tar.gz"_s, u"tgz"_s, u"Foo.tar.gz"_s, u"src bsdtar -czf"_s + app, kApp);
        row(u"X.TAR.GZ"_s, u"tgz"_s, u"X.TAR.GZ"_s, u"src bsdtar -czf"_s + app, kApp);
        row(u"tar.bz2 through x.tar"_s, u"tbz"_s, u"Foo.tar.bz2"_s, u"src bsdtar -cjf"_s + app, kApp, u"Foo.tar"_s);
        row(u"tbz through x.tar"_s, u"tbz"_s, u"Foo.tbz"_s, u"src bsdtar -cjf"_s + app, kApp, u"Foo.tar"_s);
        row(u"bz2 in place, work folder empty"_s, u"bz2"_s, u"Info.plist.bz2"_s,
            u"src bzip2 -c Foo.app/Contents/Info.plist >"_s, {}, u"Info.plist"_s);
        for (const QString &image : {u"xorriso"_s, u"udif"_s, u"udif-zlib"_s}) {
            row(image + u" image", u"dmg"_s, u"Foo.dmg"_s,
                u"src %1 -as mkisofs -hfsplus -R -V Vol -o %A ."_s.arg(image), kApp + u"|__MACOSX/|__MACOSX/._Foo.app");
        }
        for (const QString &op : {u"zip"_s, u"tgz"_s, u"tbz"_s, u"bz2"_s, u"dmg"_s}) {
            row(op + u" unreadable", op, u"Foo."_s + op, u"src garbage"_s, {});
        }
        const QStringList formats = {u"zip --format zip -cf"_s, u"tgz -czf"_s, u"tbz -cjf"_s};
        for (const QString &format : formats) {
            for (const QString &escape : {u"../evil"_s, u"../../evil"_s, u"%O/evil"_s, u"l/evil"_s}) {
                const QString op = format.section(u' ', 0, 0);
                row(op + u' ' + escape, op, u"Foo."_s + op,
                    u"esc bsdtar -P %1 %A -s ,^x$,%2, l x"_s.arg(format.section(u' ', 1), escape), {});
            }
        }
    }

    void unpack()
    {
        auto [op, name, recipe, listing, beside] =
            fetch<QString, QString, QString, QString, QString>("op", "name", "recipe", "listing", "beside");
        const bool unpacks = !listing.isEmpty() || !beside.isEmpty();
        // Downloads live in our private temporary folder, the only place the installer cleans up.
        QTemporaryDir sandbox(AppPaths::privateTempFolder() + u"/sandbox-XXXXXX"_s);
        const QString downloads = BundleTree(sandbox.filePath(u"dl"_s)).root();
        const QString outside = BundleTree(sandbox.filePath(u"outside"_s)).root();
        const QString archive = downloads + u'/' + name;
        InstallFixtures::makeAppTree(sandbox.filePath(u"src"_s));
        BundleTree escaping(sandbox.filePath(u"esc"_s));
        escaping.addSymlink(u"l"_s, outside);
        escaping.addFile(u"x"_s, "escaped");

        QStringList args = recipe.split(u' ');
        const QString folder = sandbox.filePath(args.takeFirst());
        const QString tool = args.takeFirst();
        if (tool.startsWith(u"udif")) {
            QVERIFY(InstallFixtures::run(u"xorriso"_s, args.replaceInStrings(u"%A"_s, archive + u".iso"), folder));
            QVERIFY(InstallFixtures::makeUdif(archive + u".iso", archive, tool.endsWith(u"zlib")));
        } else if (tool == u"garbage") {
            QVERIFY(PlistFiles::writeFile(archive, "not an archive"));
        } else {
            const bool toArchive = args.last() == u">";
            if (toArchive) {
                args.removeLast();
            }
            args.replaceInStrings(u"%A"_s, archive).replaceInStrings(u"%O"_s, outside);
            QVERIFY(InstallFixtures::run(tool, args, folder, toArchive ? archive : QString()));
        }

        VLInstaller installer;
        const QString work = op == u"zip"   ? installer.extractZIP(archive)
                             : op == u"tgz" ? installer.extractTGZ(archive)
                             : op == u"tbz" ? installer.extractTBZ(archive)
                             : op == u"bz2" ? installer.extractBZ2(archive)
                                            : installer.mountDMG(archive);
        QCOMPARE(!work.isEmpty(), unpacks);
        if (unpacks) {
            QCOMPARE(InstallFixtures::describe(work).join(u'|'), listing);
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
