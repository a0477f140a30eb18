// What an install link asks for one app: the link's own version against the installed copy first, then the
// catalogue's verdict, and the apps that links may not install.

#include "scan/InstallLinks.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

class TestInstallLinks : public QObject
{
    Q_OBJECT

private slots:
    void decide_data()
    {
        columns<QString, bool, QString, QString, int>("installed", "outdated", "linked", "fromLink", "decision");
        using D = InstallLinks::Decision;
        row("link 3.0, 1.0 installed, catalogue says 1.0", "1.0", false, "3.0", "", int(D::Update));
        row("link 1.0, 1.0 installed, up to date", "1.0", false, "1.0", "", int(D::UpToDate));
        row("link older than the copy, catalogue newer", "2.0", true, "1.0", "", int(D::Update));
        row("bundle link, up to date", "1.0", false, "", "", int(D::UpToDate));
        row("not installed", "", false, "3.0", "", int(D::Install));
        row("the catalogue forbids links", "1.0", true, "3.0", "2", int(D::CannotInstall));
    }

    void decide()
    {
        auto [installed, outdated, linked, fromLink, decision] =
            fetch<QString, bool, QString, QString, int>("installed", "outdated", "linked", "fromLink", "decision");
        VLApp catalogue;
        catalogue.vlID = QStringLiteral("5001");
        catalogue.download_url = QStringLiteral("http://127.0.0.1:1/notes.zip");
        catalogue.vld_install_from_link = fromLink;
        VLApp stored = catalogue;
        stored.localPath = QStringLiteral("/Applications/Notes.app");
        stored.localVersion = installed;
        stored.isOutdated = outdated;
        QCOMPARE(int(InstallLinks::decide(installed.isEmpty() ? nullptr : &stored, catalogue, linked)), decision);
    }
};

VELMORA_TEST_MAIN(TestInstallLinks)
#include "TestInstallLinks.moc"
