// velmora-place as root working for another user: it writes only into the application folders a root-owned file
// names, reads what it copies with that user's rights, never works through a folder that is not root's alone, and a
// user swapping folders for links while it runs gets nothing written or read outside.

#include "place/Place.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr uid_t kUser = 65534; // nobody: the user who asked, and the one who attacks

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

bool write(const QString &path, const QByteArray &bytes, uid_t owner = 0, mode_t mode = 0644)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && (file.close(), true) &&
           chown(encoded(path).constData(), owner, owner) == 0 && chmod(encoded(path).constData(), mode) == 0;
}

bool own(const QString &path, uid_t owner, mode_t mode = 0755)
{
    QDir().mkpath(path);
    return chown(encoded(path).constData(), owner, owner) == 0 && chmod(encoded(path).constData(), mode) == 0;
}

// Runs the verb in a child, as pkexec would start it for the user.
int place(const QString &words, const QString &configuration)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        setenv("PKEXEC_UID", QByteArray::number(kUser).constData(), 1);
        std::vector<std::string> list;
        for (const QString &word : words.split(u' ')) {
            list.push_back(word.toStdString());
        }
        _exit(Place::run(list, configuration.toStdString()));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Every file under folder whose bytes are text.
QStringList holding(const QString &folder, const QByteArray &text)
{
    QStringList found;
    QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll() == text) {
            found << file.fileName();
        }
    }
    return found;
}

} // namespace

class TestPlaceBoundary : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;

    QString path(const QString &relative) const { return m_root + u'/' + relative; }

    // A volume whose system folders are root's, an application folder named by the configuration, and a home of the
    // user's holding what is to be placed.
    bool makeVolume()
    {
        m_dir = std::make_unique<QTemporaryDir>(u"/tmp/velmora-place-XXXXXX"_s);
        m_root = m_dir->path();
        return own(m_root, 0) && write(path(u"etc/place.conf"_s), encoded(path(u"Applications"_s)) + "\n") &&
               own(path(u"etc"_s), 0) && write(path(u"etc/cron.d/sentinel"_s), "cron") &&
               write(path(u"secret"_s), "secret", 0, 0600) && write(path(u"private/key"_s), "secret", 0, 0600) &&
               own(path(u"private"_s), 0, 0700) && write(path(u"Applications/Old.app/Contents/f"_s), "old") &&
               write(path(u"Applications/Mine.app/Contents/f"_s), "mine", kUser) &&
               own(path(u"Applications/Mine.app/Contents"_s), kUser) && own(path(u"Applications/Mine.app"_s), kUser) &&
               write(path(u"Applications/Support/Foo/f"_s), "foo", kUser) &&
               own(path(u"Applications/Support/Foo"_s), kUser) && own(path(u"home"_s), kUser) &&
               write(path(u"home/Foo.app/Contents/Info.plist"_s), "new", kUser) &&
               write(path(u"home/pkg/Tools.app/Contents/x"_s), "x", kUser) &&
               write(path(u"home/pkg2/Aaa.app/Contents/x"_s), "x", kUser) &&
               write(path(u"home/pkg2/Support/Foo/x"_s), "x", kUser) &&
               write(path(u"home/pkg3/Mine.app/Contents/new"_s), "new", kUser) &&
               QProcess::execute(u"chown"_s, {u"-R"_s, u"%1:%1"_s.arg(kUser), path(u"home"_s)}) == 0;
    }

private slots:
    void init()
    {
        if (geteuid() != 0) {
            QSKIP("not run: velmora-place's boundary is root's, and this suite does not run as root");
        }
        QVERIFY(makeVolume());
    }

    void verbs_data()
    {
        columns<QString, QString, int, QString, QString>("change", "words", "status", "present", "absent");
        const QString none;
        // Allowed: each verb in the application folder.
        row("replace an app", none, u"replace %R/home/Foo.app %R/Applications/Foo.app"_s, 0,
            u"Applications/Foo.app/Contents/Info.plist"_s, none);
        row("copy an app", none, u"copy %R/home/Foo.app %R/Applications/Copy.app"_s, 0,
            u"Applications/Copy.app/Contents/Info.plist"_s, none);
        row("merge a package", none, u"merge %R/home/pkg %R/Applications"_s, 0, u"Applications/Tools.app/Contents/x"_s,
            none);
        row("remove an app", none, u"remove %R/Applications/Old.app"_s, 0, none, u"Applications/Old.app"_s);
        row("archive an app", none, u"archive %R/Applications/Old.app %R/Applications/Old.zip"_s, 0,
            u"Applications/Old.zip"_s, none);
        row("replace a user's app", none, u"replace %R/home/Foo.app %R/Applications/Mine.app"_s, 0,
            u"Applications/Mine.app/Contents/Info.plist"_s, u"Applications/Mine.app/Contents/f"_s);
        // Refused before anything is touched: outside the application folders.
        row("a cron file", none, u"replace %R/home/Foo.app %R/etc/cron.d/job"_s, 2, none, u"etc/cron.d/job"_s);
        row("merge into the volume's top", none, u"merge %R/home/pkg %R"_s, 2, none, u"Tools.app"_s);
        row("merge into the top", none, u"merge %R/home/pkg /"_s, 2, none, none);
        row("remove a system folder", none, u"remove %R/etc/cron.d"_s, 2, u"etc/cron.d/sentinel"_s, none);
        row("the application folder itself", none, u"remove %R/Applications"_s, 2, u"Applications/Old.app"_s, none);
        row("a name that only starts alike", none, u"copy %R/home/Foo.app %R/ApplicationsX/Foo.app"_s, 2, none,
            u"ApplicationsX"_s);
        // What the user may not read stays unread.
        row("a root-only file", none, u"copy %R/secret %R/Applications/secret"_s, 1, none, u"Applications/secret"_s);
        row("a root-only folder archived", none, u"archive %R/private %R/Applications/p.zip"_s, 1, none,
            u"Applications/p.zip"_s);
        // Folders that are not root's alone are never entered.
        row("inside a user's app", none, u"replace %R/home/Foo.app %R/Applications/Mine.app/Contents/Foo.app"_s, 1,
            none, u"Applications/Mine.app/Contents/Foo.app"_s);
        row("a package into a user's folder, refused whole", none, u"merge %R/home/pkg2 %R/Applications"_s, 1, none,
            u"Applications/Aaa.app"_s);
        row("an application folder its group may change", u"group-writable"_s,
            u"replace %R/home/Foo.app %R/Applications/Foo.app"_s, 1, none, u"Applications/Foo.app"_s);
        // The configuration: only root's counts, and without one only the volume at "/" is an application folder.
        row("a configuration others may change", u"configuration-writable"_s,
            u"replace %R/home/Foo.app %R/Applications/Foo.app"_s, 2, none, u"Applications/Foo.app"_s);
        row("no configuration", u"no-configuration"_s, u"replace %R/home/Foo.app %R/Applications/Foo.app"_s, 2, none,
            u"Applications/Foo.app"_s);
    }

    void verbs()
    {
        auto [change, words, status, present, absent] =
            fetch<QString, QString, int, QString, QString>("change", "words", "status", "present", "absent");
        if (change == u"group-writable") {
            QVERIFY(own(path(u"Applications"_s), 0, 0775));
        } else if (change == u"configuration-writable") {
            QVERIFY(chmod(encoded(path(u"etc/place.conf"_s)).constData(), 0666) == 0);
        } else if (change == u"no-configuration") {
            QVERIFY(QFile::remove(path(u"etc/place.conf"_s)));
        }
        QCOMPARE(place(words.replace(u"%R"_s, m_root), path(u"etc/place.conf"_s)), status);
        if (!present.isEmpty()) {
            QVERIFY2(QFileInfo(path(present)).exists(), qPrintable(present));
        }
        if (!absent.isEmpty()) {
            QVERIFY2(!QFileInfo(path(absent)).exists() && !QFileInfo(path(absent)).isSymLink(), qPrintable(absent));
        }
        QCOMPARE(QDir(path(u"etc/cron.d"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList{u"sentinel"_s});
        QVERIFY(holding(path(u"Applications"_s), "secret").isEmpty());
    }

    // The user swaps their app's Contents and the payload's Contents for links to root's folders, over and over,
    // while root replaces, merges into and removes around them.
    void swapLoop()
    {
        const pid_t attacker = fork();
        if (attacker == 0) {
            if (setgid(kUser) != 0 || setuid(kUser) != 0) {
                _exit(1);
            }
            const QByteArray targets[][2] = {
                {encoded(path(u"Applications/Mine.app/Contents"_s)), encoded(path(u"etc/cron.d"_s))},
                {encoded(path(u"home/Foo.app/Contents"_s)), encoded(path(u"private"_s))},
            };
            for (;;) {
                for (const auto &[folder, link] : targets) {
                    const QByteArray aside = folder + ".real";
                    if (rename(folder.constData(), aside.constData()) == 0) {
                        symlink(link.constData(), folder.constData());
                        unlink(folder.constData());
                        rename(aside.constData(), folder.constData());
                    }
                }
            }
        }
        const QString conf = path(u"etc/place.conf"_s);
        for (int round = 0; round < 40; ++round) {
            // The user's own app again, for the next round.
            QProcess::execute(u"chown"_s, {u"-R"_s, u"%1:%1"_s.arg(kUser), path(u"Applications/Mine.app"_s)});
            place(u"merge %1/home/pkg3 %1/Applications"_s.arg(m_root), conf);
            place(u"replace %1/home/Foo.app %1/Applications/Foo.app"_s.arg(m_root), conf);
            place(u"replace %1/home/Foo.app %1/Applications/Mine.app/Contents/Foo.app"_s.arg(m_root), conf);
            if (round % 10 == 9) {
                place(u"remove %1/Applications/Mine.app"_s.arg(m_root), conf);
                QVERIFY(write(path(u"Applications/Mine.app/Contents/f"_s), "mine", kUser));
            }
        }
        kill(attacker, SIGKILL);
        waitpid(attacker, nullptr, 0);
        QCOMPARE(QDir(path(u"etc/cron.d"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList{u"sentinel"_s});
        QCOMPARE(QDir(path(u"private"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList{u"key"_s});
        QVERIFY(holding(path(u"Applications"_s), "secret").isEmpty());
        QVERIFY(QFileInfo(path(u"Applications/Foo.app"_s)).isDir());
    }
};

VELMORA_TEST_MAIN(TestPlaceBoundary)
#include "TestPlaceBoundary.moc"
