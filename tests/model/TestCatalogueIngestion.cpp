// Records made and refreshed from catalogue items, app-info replies and install links.
// Items and expectations are JSON written with single quotes. Expectations name the record's fields as --json
// shows them; null means absent, and "md5:TEXT" the MD5 hex digest of TEXT.

#include "model/AppJson.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

QJsonObject object(const char *singleQuoted)
{
    QByteArray text(singleQuoted);
    text.replace('\'', '"');
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        qFatal("bad test JSON: %s", singleQuoted);
    }
    return document.object();
}

QVariantMap item(const char *singleQuoted)
{
    return object(singleQuoted).toVariantMap();
}

void checkFields(const VLApp &app, const QJsonObject &expected)
{
    const QJsonObject actual = appToJson(app);
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        QJsonValue wanted = it.value();
        if (wanted.toString().startsWith(QLatin1String("md5:"))) {
            wanted = md5HexHash(wanted.toString().mid(4));
        }
        QVERIFY2(actual.contains(it.key()), qPrintable(it.key()));
        QVERIFY2(actual.value(it.key()) == wanted,
                 qPrintable(it.key() + QStringLiteral(" is ") + actual.value(it.key()).toVariant().toString()));
    }
}

VLApp make(const QString &kind, const QVariantMap &data)
{
    static const QHash<QString, VLApp (*)(const QVariantMap &)> makers = {
        {QStringLiteral("json"), &VLApp::initWithServerItemJSON},
        {QStringLiteral("long"), &VLApp::initWithServerItem},
        {QStringLiteral("watch"), &VLApp::initWithWatchListItem},
        {QStringLiteral("purchase"), &VLApp::initWithPurchaseItem},
        {QStringLiteral("promo"), &VLApp::initWithPromoItem}};
    return makers.value(kind)(data);
}

void apply(VLApp &app, const QString &kind, const QVariantMap &data)
{
    static const QHash<QString, void (VLApp::*)(const QVariantMap &)> updaters = {
        {QStringLiteral("json"), &VLApp::updateWithServerItemJSON},
        {QStringLiteral("long"), &VLApp::updateWithServerItem},
        {QStringLiteral("watch"), &VLApp::updateWithWatchListsItem},
        {QStringLiteral("info"), &VLApp::applyServerInfo},
        {QStringLiteral("purchase"), &VLApp::updateWithPromoPurchaseItem}};
    (app.*updaters.value(kind))(data);
}

} // namespace

class TestCatalogueIngestion : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

private slots:
    // A record made from one item and, where a second kind is named, refreshed with a second item.
    void ingest_data()
    {
        columns<QString, QVariantMap, QString, QVariantMap, QJsonObject>("createKind", "first", "updateKind", "second",
                                                                         "expected");
        const auto update = [](const char *name, const char *createKind, const char *first, const char *updateKind,
                               const char *second, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(createKind) << item(first) << QString::fromLatin1(updateKind)
                                << item(second) << object(expected);
        };
        const auto row = [&update](const char *name, const char *kind, const char *data, const char *expected) {
            update(name, kind, data, "", "{}", expected);
        };
        row("json, few keys", "json", "{'g':'Foo Bar.app','m':'5001','i':'','u':null,'f1':[1]}",
            "{'ranking':null,'displayName':'Foo Bar','kind':'app','localPath':'-','localVersion':'-',"
            "'digestString':'md5:5001','vlDate':' -- ','masDate':null,'skippedVersion':'-','developer':null}");
        row("json h, i and l as sent", "json", "{'m':'5001','h':'0a1b','i':'1.2','l':'10.9 or later'}",
            "{'digestString':'0a1b','localVersion':'1.2','minOS':'10.9 or later'}");
        row("json h that is no file name", "json", "{'m':'5001','h':'../../x'}", "{'digestString':'md5:5001'}");
        row("json p is the licence on creation", "json", "{'m':'1','o':'Free','p':'2048'}",
            "{'license':'2048','fileSize':'2048'}");
        row("json 10146 as a number", "json", "{'m':10146,'y':'0'}", "{'vlID':'10146','vld_install_from_link':'2'}");
        row("json list, purchase and number values", "json", "{'j':'2.0','f1':7,'e':'7','d':'1.0'}",
            "{'vlVersion':'2.0','ranking':7,'wlID':'7','purchasedVersion':'1.0','orderid':null}");
        row("long keys, never the short ones", "long",
            "{'name':'Foo.app','current_version':'2.0','vl_id':'5001','original_path':'d1','file_size':'2048',"
            "'license':'Free','g':'X','keywords':'k'}",
            "{'name':'Foo.app','vlVersion':'2.0','vlID':'5001','digestString':'d1','license':'2048','keywords':null}");
        row("watch list: OS number, 10146 rule, no date", "watch",
            "{'wl_id':'7','name':'Foo','vl_id':'10146','min_os':'10.13 or later','vld_install_from_link':'1'}",
            "{'wlID':'7','displayName':'Foo','minOS':'10.13','vld_install_from_link':'2','localPath':'-',"
            "'localVersion':'-','digestString':'md5:10146','vlDate':' -- '}");
        row("purchase takes no catalogue texts", "purchase",
            "{'name':'Foo','vl_id':'5001','orderid':'9','license':'F'}",
            "{'orderid':'9','license':null,'localPath':'-','vlVersion':'-','digestString':'md5:5001'}");
        row("promotion", "promo", "{'title':'Foo.app','prod_id':'5002','link':'/app','price':'4.99'}",
            "{'displayName':'Foo.app','vlID':'5002','deal_url':'/app','deal_price':'4.99','download_url':null,"
            "'digestString':'md5:5002'}");
        update("json o is read on update", "json", "{'m':'1','o':'Free','p':'2048'}", "json", "{'o':'Free','p':'4'}",
               "{'license':'Free','fileSize':'4'}");
        update("long license is read on update", "long", "{'license':'Free','file_size':'2'}", "long",
               "{'license':'Free'}", "{'license':'Free','fileSize':null}");
        update("json update: dates reset, what the item lacks cleared", "json",
               "{'j':'1.0','q':'d1','r':'d2','u':'Dev','e1':'u1','filehash':'h1','x':'1','g1':'k','f1':2}", "json",
               "{'m':'1'}",
               "{'vlVersion':null,'vlDate':'-','masDate':'-','developer':null,'download_url':null,'filehash':null,"
               "'opens_in_window':null,'keywords':null,'ranking':null}");
        update("json new values", "json", "{'m':'1','j':'1.0','q':'d1'}", "json",
               "{'m':'2','j':'2.0','q':'d3','e':'5'}", "{'vlID':'2','vlVersion':'2.0','vlDate':'d3','wlID':'5'}");
        update("json names, l and h only on creation", "json", "{'m':'1','g':'A','l':'10.9','h':'d1'}", "json",
               "{'m':'1','g':'B','l':'11.0','h':'d2'}", "{'name':'A','minOS':'10.9','digestString':'d1'}");
        update("json 10146 on update", "json", "{'m':'10146'}", "json", "{'y':'1'}", "{'vld_install_from_link':'2'}");
        update("json new link drops the old hash", "json", "{'e1':'u1','filehash':'h1'}", "json", "{'e1':'u2'}",
               "{'download_url':'u2','filehash':null}");
        update("watch list update clears what the item lacks", "watch",
               "{'vl_id':'5','name':'A','min_os':'10.9','vl_date':'d1','developer':'Dev','link':'u1'}", "watch",
               "{'name':'B','current_version':'3.0','min_os':'11.2 or later'}",
               "{'vlID':'5','name':'B','vlVersion':'3.0','minOS':'11.2','vlDate':' -- ','developer':null,"
               "'download_url':null}");
        update("purchase on a watch-list record", "watch", "{'vl_id':'5','list_name':'All'}", "purchase",
               "{'orderid':'9'}", "{'listname':'All','orderid':'9'}");
        update("app info: given keys only, the OS number, a new link without its old hash", "json",
               "{'m':'5','e1':'u1','filehash':'h1','u':'Dev'}", "info",
               "{'minOS':'10.13 or later','descr':'Long','title':'Foo 2','link':'u2'}",
               "{'developer':'Dev','minOS':'10.13','longDescription':'Long','name':'Foo 2','displayName':'Foo 2',"
               "'download_url':'u2','filehash':null}");
        update("app info keeps the hash of an unchanged link", "json", "{'e1':'u1','filehash':'h1'}", "info",
               "{'link':'u1'}", "{'download_url':'u1','filehash':'h1'}");
    }

    void ingest()
    {
        auto [createKind, first, updateKind, second, expected] =
            fetch<QString, QVariantMap, QString, QVariantMap, QJsonObject>("createKind", "first", "updateKind",
                                                                           "second", "expected");
        VLApp app = make(createKind, first);
        if (!updateKind.isEmpty())
            apply(app, updateKind, second);
        checkFields(app, expected);
    }

    // An installed record takes the catalogue version and is judged against it, keeping the user's choices.
    void updateOfInstalledRecord_data()
    {
        columns<QString, bool, QString, bool>("skipped", "setToCurrent", "expectedLocal", "expectedOutdated");
        QTest::newRow("newer catalogue version") << QStringLiteral("-") << false << QStringLiteral("1.0") << true;
        QTest::newRow("skipped that version") << QStringLiteral("2.0") << false << QStringLiteral("1.0") << false;
        QTest::newRow("skipped an older one") << QStringLiteral("1.5") << false << QStringLiteral("1.0") << true;
        QTest::newRow("set to current") << QStringLiteral("-") << true << QStringLiteral("2.0") << false;
    }

    void updateOfInstalledRecord()
    {
        auto [skipped, setToCurrent, expectedLocal, expectedOutdated] =
            fetch<QString, bool, QString, bool>("skipped", "setToCurrent", "expectedLocal", "expectedOutdated");
        const QString path =
            PlistFiles::makeBundle(m_root.filePath(QStringLiteral("Installed.app")),
                                   PlistFiles::info(QStringLiteral("com.example.i"), QStringLiteral("1.0")));
        VLApp app = VLApp::initWithBundleAt(path);
        app.skippedVersion = skipped;
        app.isSetLocalVersionToCurrent = setToCurrent;
        app.updateWithServerItemJSON(item("{'m':'5001','j':'2.0','g':'Catalogue Name','i':'0.1'}"));
        checkFields(app, object("{'vlVersion':'2.0','vlID':'5001','name':'Installed.app'}"));
        QCOMPARE(app.localVersion, expectedLocal);
        QCOMPARE(app.isOutdated, expectedOutdated);
        QCOMPARE(app.skippedVersion, skipped);

        // A watch-list item refreshes the catalogue facts but not the names the bundle gave.
        app.isSetLocalVersionToCurrent = false;
        app.skippedVersion = QStringLiteral("-");
        app.updateWithWatchListsItem(item("{'vl_id':'5001','name':'Other','current_version':'0.5'}"));
        checkFields(app, object("{'vlVersion':'0.5','name':'Installed.app'}"));
        QCOMPARE(app.localPath, path);
        QVERIFY(!app.isOutdated);
    }

    void initWithLink_data()
    {
        // An empty expected: no record.
        columns<QString, QJsonObject>("link", "expected");
        QTest::newRow("app link") << QStringLiteral("velmora://app/5001/Velmora Notes/2.0%20b%C3%A9ta")
                                  << object("{'vlID':'5001','name':'Velmora Notes','displayName':'Velmora Notes',"
                                            "'vlVersion':'2.0 b\\u00e9ta','localPath':'-','localVersion':'-',"
                                            "'skippedVersion':'-','masDate':'-','license':'','download_url':'',"
                                            "'minOS':'','digestString':'md5:5001','isOutdated':true}");
        QTest::newRow("10146") << QStringLiteral("velmora://app/10146/X/1") << object("{'vld_install_from_link':'2'}");
        QTest::newRow("five parts") << QStringLiteral("velmora://app/5001/Foo") << QJsonObject();
        QTest::newRow("bundle link") << QStringLiteral("velmora://bundle/12/Foo/1") << QJsonObject();
        QTest::newRow("no id") << QStringLiteral("velmora://app//Foo/1") << QJsonObject();
    }

    void initWithLink()
    {
        auto [link, expected] = fetch<QString, QJsonObject>("link", "expected");
        const std::optional<VLApp> app = VLApp::initWithLink(link);
        QCOMPARE(app.has_value(), !expected.isEmpty());
        if (app) {
            checkFields(*app, expected);
            QVERIFY(QRegularExpression(QStringLiteral("^[0-9]+$")).match(app->sortDate).hasMatch());
            QVERIFY(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\+0000$"))
                        .match(app->lastmatched)
                        .hasMatch());
        }
    }

    // A catalogue record shows an icon already in the cache at once, else the generic one.
    void cachedIcons()
    {
        QCOMPARE(VLApp::initWithServerItemJSON(item("{'m':'6001'}")).appIcon, QStringLiteral(""));
        const QString cached = VLApp::catalogueIconPath(md5HexHash(QStringLiteral("6001")));
        QVERIFY(cached.endsWith(QStringLiteral("/Velmora/Velmora Desktop 6/mcache_600/") +
                                md5HexHash(QStringLiteral("6001"))));
        QVERIFY(QDir().mkpath(QFileInfo(cached).path()));
        QVERIFY(QFile(cached).open(QIODevice::WriteOnly));
        QCOMPARE(VLApp::initWithServerItemJSON(item("{'m':'6001'}")).appIcon, cached);
        QCOMPARE(VLApp::initWithPromoItem(item("{'prod_id':'6001'}")).appIcon, cached);
        QVERIFY(VLApp::catalogueIconPath(QStringLiteral("..")).isEmpty());
    }
};

VELMORA_TEST_MAIN(TestCatalogueIngestion)
#include "TestCatalogueIngestion.moc"
