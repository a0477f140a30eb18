// Records made and refreshed from catalogue items, app-info replies and install links.
// Items and expectations are written as JSON with single quotes; an expected null means the field is absent,
// and "md5:TEXT" stands for the MD5 hex digest of TEXT.

#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "model/VLMdItem.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

QVariantMap map(const char *singleQuoted)
{
    QByteArray text(singleQuoted);
    text.replace('\'', '"');
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        qFatal("bad test JSON: %s", singleQuoted);
    }
    return document.object().toVariantMap();
}

QVariant fieldValue(const VLApp &app, const QString &field)
{
    static const QHash<QString, QString VLApp::*> texts = {
        {QStringLiteral("localPath"), &VLApp::localPath},
        {QStringLiteral("digestString"), &VLApp::digestString},
        {QStringLiteral("name"), &VLApp::name},
        {QStringLiteral("localizedName"), &VLApp::localizedName},
        {QStringLiteral("displayName"), &VLApp::displayName},
        {QStringLiteral("bundleID"), &VLApp::bundleID},
        {QStringLiteral("localVersion"), &VLApp::localVersion},
        {QStringLiteral("kind"), &VLApp::kind},
        {QStringLiteral("vlID"), &VLApp::vlID},
        {QStringLiteral("vlVersion"), &VLApp::vlVersion},
        {QStringLiteral("vlDate"), &VLApp::vlDate},
        {QStringLiteral("masVersion"), &VLApp::masVersion},
        {QStringLiteral("masDate"), &VLApp::masDate},
        {QStringLiteral("mas_url"), &VLApp::mas_url},
        {QStringLiteral("download_url"), &VLApp::download_url},
        {QStringLiteral("shortDescription"), &VLApp::shortDescription},
        {QStringLiteral("longDescription"), &VLApp::longDescription},
        {QStringLiteral("releaseNotes"), &VLApp::releaseNotes},
        {QStringLiteral("fileSize"), &VLApp::fileSize},
        {QStringLiteral("minOS"), &VLApp::minOS},
        {QStringLiteral("beta"), &VLApp::beta},
        {QStringLiteral("paid_update"), &VLApp::paid_update},
        {QStringLiteral("developer"), &VLApp::developer},
        {QStringLiteral("license"), &VLApp::license},
        {QStringLiteral("version_override"), &VLApp::version_override},
        {QStringLiteral("opens_in_window"), &VLApp::opens_in_window},
        {QStringLiteral("vld_install_from_link"), &VLApp::vld_install_from_link},
        {QStringLiteral("filehash"), &VLApp::filehash},
        {QStringLiteral("sortDate"), &VLApp::sortDate},
        {QStringLiteral("keywords"), &VLApp::keywords},
        {QStringLiteral("skippedVersion"), &VLApp::skippedVersion},
        {QStringLiteral("wlID"), &VLApp::wlID},
        {QStringLiteral("listname"), &VLApp::listname},
        {QStringLiteral("orderid"), &VLApp::orderid},
        {QStringLiteral("serialNumber"), &VLApp::serialNumber},
        {QStringLiteral("orderDate"), &VLApp::orderDate},
        {QStringLiteral("purchasedVersion"), &VLApp::purchasedVersion},
        {QStringLiteral("deal_id"), &VLApp::deal_id},
        {QStringLiteral("deal_url"), &VLApp::deal_url},
        {QStringLiteral("discount"), &VLApp::discount},
        {QStringLiteral("deal_price"), &VLApp::deal_price},
        {QStringLiteral("deal_vers"), &VLApp::deal_vers},
        {QStringLiteral("parent_promo_id"), &VLApp::parent_promo_id},
    };
    if (const auto found = texts.constFind(field); found != texts.cend()) {
        const QString &text = app.*(*found);
        return text.isNull() ? QVariant() : QVariant(text);
    }
    if (field == QLatin1String("isOutdated")) {
        return app.isOutdated;
    }
    if (field == QLatin1String("ranking")) {
        return app.ranking ? QVariant(*app.ranking) : QVariant();
    }
    qFatal("unknown field %s", qPrintable(field));
}

void checkFields(const VLApp &app, const QVariantMap &expected)
{
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const QVariant actual = fieldValue(app, it.key());
        QVariant wanted = it.value();
        if (wanted.typeId() == QMetaType::QString && wanted.toString().startsWith(QLatin1String("md5:"))) {
            wanted = md5HexHash(wanted.toString().mid(4));
        }
        if (wanted.isNull()) {
            QVERIFY2(!actual.isValid(), qPrintable(it.key() + QStringLiteral(" should be absent, is ") + actual.toString()));
        } else {
            QVERIFY2(actual.isValid(), qPrintable(it.key() + QStringLiteral(" is absent")));
            QCOMPARE(actual.toString(), wanted.toString());
        }
    }
}

VLApp create(const QString &kind, const QVariantMap &item)
{
    if (kind == QLatin1String("json")) {
        return VLApp::initWithServerItemJSON(item);
    }
    if (kind == QLatin1String("long")) {
        return VLApp::initWithServerItem(item);
    }
    if (kind == QLatin1String("watch")) {
        return VLApp::initWithWatchListItem(item);
    }
    if (kind == QLatin1String("purchase")) {
        return VLApp::initWithPurchaseItem(item);
    }
    return VLApp::initWithPromoItem(item);
}

void update(VLApp &app, const QString &kind, const QVariantMap &item)
{
    if (kind == QLatin1String("json")) {
        app.updateWithServerItemJSON(item);
    } else if (kind == QLatin1String("long")) {
        app.updateWithServerItem(item);
    } else if (kind == QLatin1String("watch")) {
        app.updateWithWatchListsItem(item);
    } else if (kind == QLatin1String("info")) {
        app.applyServerInfo(item);
    } else {
        app.updateWithPromoPurchaseItem(item);
    }
}

} // namespace

class TestCatalogueIngestion : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

private slots:
    void getJSONItemWithName_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QVariant>("expected"); // invalid: absent

        QTest::newRow("text") << QVariant(QStringLiteral("2.0")) << QVariant(QStringLiteral("2.0"));
        QTest::newRow("empty text is present") << QVariant(QStringLiteral("")) << QVariant(QStringLiteral(""));
        QTest::newRow("null") << QVariant::fromValue(nullptr) << QVariant();
        QTest::newRow("integer id") << QVariant(10146) << QVariant(QStringLiteral("10146"));
        QTest::newRow("whole double") << QVariant(10146.0) << QVariant(QStringLiteral("10146"));
        QTest::newRow("fraction") << QVariant(0.5) << QVariant(QStringLiteral("0.5"));
        QTest::newRow("bool") << QVariant(true) << QVariant(QStringLiteral("1"));
        QTest::newRow("list") << QVariant(QVariantList{1}) << QVariant();
    }

    void getJSONItemWithName()
    {
        QFETCH(QVariant, value);
        QFETCH(QVariant, expected);
        const QString text = VLApp::getJSONItemWithName(QStringLiteral("k"), {{QStringLiteral("k"), value}});
        QCOMPARE(text.isNull(), !expected.isValid());
        QCOMPARE(text, expected.toString());
        QVERIFY(VLApp::getJSONItemWithName(QStringLiteral("other"), {{QStringLiteral("k"), value}}).isNull());
    }

    void create_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QVariantMap>("item");
        QTest::addColumn<QVariantMap>("expected");
        const auto row = [](const char *name, const char *kind, const char *item, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(kind) << map(item) << map(expected);
        };

        row("json names", "json", "{'g':'Foo Bar.app','m':'5001'}",
            "{'name':'Foo Bar.app','localizedName':'Foo Bar.app','displayName':'Foo Bar','kind':'app',"
            "'localPath':'-','vlID':'5001','skippedVersion':'-','isOutdated':false}");
        row("json without i", "json", "{'m':'5001'}", "{'localVersion':'-'}");
        row("json with empty i", "json", "{'m':'5001','i':''}", "{'localVersion':'-'}");
        row("json with i", "json", "{'m':'5001','i':'1.2'}", "{'localVersion':'1.2'}");
        row("json without h", "json", "{'m':'5001'}", "{'digestString':'md5:5001'}");
        row("json with empty h", "json", "{'m':'5001','h':''}", "{'digestString':'md5:5001'}");
        row("json with h", "json", "{'m':'5001','h':'0a1b'}", "{'digestString':'0a1b'}");
        row("json h that is no file name", "json", "{'m':'5001','h':'../../x'}", "{'digestString':'md5:5001'}");
        row("json p is the licence on creation", "json", "{'m':'1','o':'Free','p':'2048'}",
            "{'license':'2048','fileSize':'2048'}");
        row("json without p has no licence", "json", "{'m':'1','o':'Free'}", "{'license':null,'fileSize':null}");
        row("json 10146 forced to 2", "json", "{'m':'10146','y':'1'}", "{'vld_install_from_link':'2'}");
        row("json 10146 without y", "json", "{'m':'10146'}", "{'vld_install_from_link':'2'}");
        row("json numeric 10146", "json", "{'m':10146,'y':'0'}", "{'vlID':'10146','vld_install_from_link':'2'}");
        row("json other id keeps y", "json", "{'m':'5001','y':'1'}", "{'vld_install_from_link':'1'}");
        row("json nulls are absent", "json", "{'m':'5001','u':null,'t':null,'j':null}",
            "{'developer':null,'shortDescription':null,'vlVersion':null}");
        row("json missing date placeholder", "json", "{'m':'5001'}", "{'vlDate':' -- ','masDate':null}");
        row("json dates", "json", "{'q':'Nov 22, 2026','r':'Nov 20, 2026'}",
            "{'vlDate':'Nov 22, 2026','masDate':'Nov 20, 2026'}");
        row("json l kept as sent", "json", "{'l':'10.9 or later'}", "{'minOS':'10.9 or later'}");
        row("json catalogue fields", "json",
            "{'j':'2.0','x':'1','z':'1','e1':'http://h/f.zip','a1':'macappstore://a','v':'3','k':'1.9','n':'beta',"
            "'u':'Dev','t':'Short','w':'Notes','s':'1795305600','g1':'edit text','f1':7,'filehash':'abc'}",
            "{'vlVersion':'2.0','opens_in_window':'1','paid_update':'1','download_url':'http://h/f.zip',"
            "'mas_url':'macappstore://a','version_override':'3','masVersion':'1.9','beta':'beta','developer':'Dev',"
            "'shortDescription':'Short','releaseNotes':'Notes','sortDate':'1795305600','keywords':'edit text',"
            "'ranking':7,'filehash':'abc'}");
        row("json list and purchase keys", "json", "{'e':'7','f':'All','a':'9','b':'S-1','c':'2026-01-02','d':'1.0'}",
            "{'wlID':'7','listname':'All','orderid':'9','serialNumber':'S-1','orderDate':'2026-01-02',"
            "'purchasedVersion':'1.0'}");
        row("json without list keys", "json", "{'m':'5001'}", "{'wlID':null,'listname':null,'orderid':null}");

        row("long keys", "long",
            "{'name':'Foo.app','installed_version':'1.0','current_version':'2.0','mas_date':'Oct 1, 2026',"
            "'min_os':'10.13','vl_id':'5001','original_path':'d1','opens_in_window':'1','vld_install_from_link':'1',"
            "'paidupgrade':'0','link':'http://h/f.zip','mas_download_url':'m','version_override':'1',"
            "'mas_version':'1.9','stability':'release','license':'Free','file_size':'2048','developer':'Dev',"
            "'shortdescr':'Short','release_notes':'Notes','sort_date':'17','vl_date':'Nov 1, 2026','wl_id':'3',"
            "'list_name':'All','orderid':'4','serial_number':'S','order_date':'2026','purchased_version':'0.9',"
            "'filehash':'h'}",
            "{'name':'Foo.app','displayName':'Foo','localVersion':'1.0','vlVersion':'2.0','masDate':'Oct 1, 2026',"
            "'minOS':'10.13','vlID':'5001','digestString':'d1','opens_in_window':'1','vld_install_from_link':'1',"
            "'paid_update':'0','download_url':'http://h/f.zip','mas_url':'m','version_override':'1',"
            "'masVersion':'1.9','beta':'release','license':'2048','fileSize':'2048','developer':'Dev',"
            "'shortDescription':'Short','releaseNotes':'Notes','sortDate':'17','vlDate':'Nov 1, 2026','wlID':'3',"
            "'listname':'All','orderid':'4','serialNumber':'S','orderDate':'2026','purchasedVersion':'0.9',"
            "'filehash':'h'}");
        row("long ignores short keys", "long", "{'g':'X','m':'5','keywords':'k','ranking':3}",
            "{'name':null,'vlID':null,'digestString':'md5:','keywords':null,'ranking':null}");

        row("watch list", "watch",
            "{'wl_id':'7','list_name':'All','name':'Foo','current_version':'2.0','vl_id':'5001',"
            "'min_os':'10.13 or later','link':'http://h/f.zip','filehash':'h','license':'Free','file_size':'2048'}",
            "{'wlID':'7','listname':'All','name':'Foo','displayName':'Foo','vlVersion':'2.0','vlID':'5001',"
            "'minOS':'10.13','download_url':'http://h/f.zip','filehash':'h','license':'Free','fileSize':'2048',"
            "'localPath':'-','localVersion':'-','digestString':'md5:5001','vlDate':' -- ','isOutdated':false}");
        row("watch list without min_os", "watch", "{'vl_id':'5001'}", "{'minOS':'','vlVersion':'-'}");
        row("watch list 10146", "watch", "{'vl_id':'10146','vld_install_from_link':'1'}",
            "{'vld_install_from_link':'2'}");

        row("purchase", "purchase",
            "{'name':'Foo','bundle_id':'com.x','vl_id':'5001','orderid':'9','serial_number':'S','order_date':'2026',"
            "'purchased_version':'1.0','opens_in_window':'1','vld_install_from_link':'1','license':'Free'}",
            "{'name':'Foo','displayName':'Foo','bundleID':'com.x','vlID':'5001','orderid':'9','serialNumber':'S',"
            "'orderDate':'2026','purchasedVersion':'1.0','opens_in_window':'1','vld_install_from_link':'1',"
            "'license':null,'localPath':'-','vlVersion':'-','digestString':'md5:5001'}");

        row("promotion", "promo",
            "{'title':'Foo','bundle_id':'com.x','shortdescr':'S','prod_id':'5002','id':'801','link':'/app',"
            "'discount':'50%','price':'4.99','appversion':'2.0','parent_sales_profile_id':'80'}",
            "{'name':'Foo','displayName':'Foo','bundleID':'com.x','shortDescription':'S','vlID':'5002',"
            "'deal_id':'801','deal_url':'/app','discount':'50%','deal_price':'4.99','deal_vers':'2.0',"
            "'parent_promo_id':'80','download_url':null,'localPath':'-','digestString':'md5:5002'}");
    }

    void create()
    {
        QFETCH(QString, kind);
        QFETCH(QVariantMap, item);
        QFETCH(QVariantMap, expected);
        checkFields(::create(kind, item), expected);
    }

    void update_data()
    {
        QTest::addColumn<QString>("createKind");
        QTest::addColumn<QVariantMap>("first");
        QTest::addColumn<QString>("updateKind");
        QTest::addColumn<QVariantMap>("second");
        QTest::addColumn<QVariantMap>("expected");
        const auto row = [](const char *name, const char *createKind, const char *first, const char *updateKind,
                            const char *second, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(createKind) << map(first) << QString::fromLatin1(updateKind)
                                << map(second) << map(expected);
        };

        row("json o is read on update", "json", "{'m':'1','o':'Free','p':'2048'}", "json",
            "{'m':'1','o':'Free','p':'4096'}", "{'license':'Free','fileSize':'4096'}");
        row("long license is read on update", "long", "{'vl_id':'1','license':'Free','file_size':'2'}", "long",
            "{'vl_id':'1','license':'Free'}", "{'license':'Free','fileSize':'2'}");
        row("json dates reset when not sent", "json", "{'q':'Nov 1, 2026','r':'Oct 1, 2026'}", "json", "{'m':'1'}",
            "{'vlDate':'-','masDate':'-'}");
        row("json new dates", "json", "{'q':'Nov 1, 2026','r':'Oct 1, 2026'}", "json",
            "{'q':'Nov 2, 2026','r':'Oct 2, 2026'}", "{'vlDate':'Nov 2, 2026','masDate':'Oct 2, 2026'}");
        row("json missing keys keep fields", "json", "{'m':'1','u':'Dev','t':'Short','g1':'k','f1':2}", "json",
            "{'m':'1'}", "{'developer':'Dev','shortDescription':'Short','keywords':'k','ranking':2}");
        row("json version and id", "json", "{'m':'1','j':'1.0'}", "json", "{'m':'2','j':'2.0','g1':'k2','f1':3}",
            "{'vlID':'2','vlVersion':'2.0','keywords':'k2','ranking':3}");
        row("json names, l and h only on creation", "json", "{'m':'1','g':'A','l':'10.9','h':'d1'}", "json",
            "{'m':'1','g':'B','l':'11.0','h':'d2'}", "{'name':'A','minOS':'10.9','digestString':'d1'}");
        row("json 10146 on update", "json", "{'m':'10146'}", "json", "{'m':'10146','y':'1'}",
            "{'vld_install_from_link':'2'}");
        row("json new link drops the old hash", "json", "{'e1':'u1','filehash':'h1'}", "json", "{'e1':'u2'}",
            "{'download_url':'u2','filehash':null}");
        row("json hash without link", "json", "{'e1':'u1','filehash':'h1'}", "json", "{'filehash':'h2'}",
            "{'download_url':'u1','filehash':'h2'}");
        row("json list keys on update", "json", "{'m':'1'}", "json", "{'m':'1','e':'5','f':'All','a':'6'}",
            "{'wlID':'5','listname':'All','orderid':'6'}");

        row("watch list update", "watch", "{'vl_id':'5','name':'A','min_os':'10.9','vl_date':'d1'}", "watch",
            "{'vl_id':'5','name':'B','current_version':'3.0','min_os':'11.2 or later'}",
            "{'name':'B','vlVersion':'3.0','minOS':'11.2','vlDate':'d1'}");
        row("purchase on a watch-list record", "watch", "{'vl_id':'5','name':'A','list_name':'All'}", "purchase",
            "{'vl_id':'5','orderid':'9','serial_number':'S','order_date':'2026','purchased_version':'1.0'}",
            "{'listname':'All','orderid':'9','serialNumber':'S','orderDate':'2026','purchasedVersion':'1.0'}");

        row("app info", "json", "{'m':'5','e1':'u1','filehash':'h1','o':'x'}", "info",
            "{'shortDescription':'S','developer':'D','minOS':'10.13 or later','releaseNotes':'N','vlDate':'Nov 1, 2026',"
            "'license':'Free','stability':'release','descr':'Long','bundleid':'com.x','title':'Foo 2',"
            "'filesize':'2048','paidupgrade':'0','version_override':'2','link':'u2','mas_download_url':'m'}",
            "{'shortDescription':'S','developer':'D','minOS':'10.13','releaseNotes':'N','vlDate':'Nov 1, 2026',"
            "'license':'Free','beta':'release','longDescription':'Long','bundleID':'com.x','name':'Foo 2',"
            "'displayName':'Foo 2','fileSize':'2048','paid_update':'0','version_override':'2','download_url':'u2',"
            "'filehash':null,'mas_url':'m'}");
        row("app info without keys", "json", "{'m':'5','u':'Dev','p':'1'}", "info", "{}",
            "{'developer':'Dev','license':'1','minOS':null}");
    }

    void update()
    {
        QFETCH(QString, createKind);
        QFETCH(QVariantMap, first);
        QFETCH(QString, updateKind);
        QFETCH(QVariantMap, second);
        QFETCH(QVariantMap, expected);
        VLApp app = ::create(createKind, first);
        ::update(app, updateKind, second);
        checkFields(app, expected);
    }

    // An installed record takes the catalogue version and is judged against it, keeping the user's choices.
    void updateOfInstalledRecord_data()
    {
        QTest::addColumn<QString>("skipped");
        QTest::addColumn<bool>("setToCurrent");
        QTest::addColumn<QString>("expectedLocal");
        QTest::addColumn<bool>("expectedOutdated");

        QTest::newRow("newer catalogue version") << QStringLiteral("-") << false << QStringLiteral("1.0") << true;
        QTest::newRow("skipped that version") << QStringLiteral("2.0") << false << QStringLiteral("1.0") << false;
        QTest::newRow("skipped an older one") << QStringLiteral("1.5") << false << QStringLiteral("1.0") << true;
        QTest::newRow("set to current") << QStringLiteral("-") << true << QStringLiteral("2.0") << false;
    }

    void updateOfInstalledRecord()
    {
        QFETCH(QString, skipped);
        QFETCH(bool, setToCurrent);
        QFETCH(QString, expectedLocal);
        QFETCH(bool, expectedOutdated);

        const QString path = PlistFiles::makeBundle(m_root.filePath(QStringLiteral("Installed.app")),
                                                    PlistFiles::info(QStringLiteral("com.example.i"), QStringLiteral("1.0")));
        VLApp app = VLApp::initWithMdItem(VLMdItem::fromPath(path));
        app.skippedVersion = skipped;
        app.isSetLocalVersionToCurrent = setToCurrent;
        app.updateWithServerItemJSON(map("{'m':'5001','j':'2.0','g':'Catalogue Name','i':'0.1'}"));
        QCOMPARE(app.vlVersion, QStringLiteral("2.0"));
        QCOMPARE(app.vlID, QStringLiteral("5001"));
        QCOMPARE(app.localVersion, expectedLocal);
        QCOMPARE(app.isOutdated, expectedOutdated);
        QCOMPARE(app.skippedVersion, skipped);
        QCOMPARE(app.localPath, path);
        QCOMPARE(app.name, QStringLiteral("Installed.app"));

        // A watch-list item refreshes the catalogue facts but not the names the bundle gave.
        app.isSetLocalVersionToCurrent = false;
        app.skippedVersion = QStringLiteral("-");
        app.updateWithWatchListsItem(map("{'vl_id':'5001','name':'Other','current_version':'0.5','list_name':'All'}"));
        QCOMPARE(app.name, QStringLiteral("Installed.app"));
        QCOMPARE(app.listname, QStringLiteral("All"));
        QCOMPARE(app.vlVersion, QStringLiteral("0.5"));
        QVERIFY(!app.isOutdated);
    }

    void initWithLink_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<bool>("made");
        QTest::addColumn<QVariantMap>("expected");

        QTest::newRow("app link") << QStringLiteral("velmora://app/5001/Velmora Notes/2.0%20beta") << true
                                  << map("{'vlID':'5001','name':'Velmora Notes','localizedName':'Velmora Notes',"
                                         "'displayName':'Velmora Notes','vlVersion':'2.0 beta','localPath':'-',"
                                         "'localVersion':'-','skippedVersion':'-','masVersion':'-','vlDate':'-',"
                                         "'masDate':'-','license':'','download_url':'','minOS':'','fileSize':'',"
                                         "'purchasedVersion':'','digestString':'md5:5001','isOutdated':true}");
        QTest::newRow("version escaped as UTF-8") << QStringLiteral("velmora://app/7/Caf/1.0%C3%A9") << true
                                                  << QVariantMap{{QStringLiteral("vlVersion"), QStringLiteral("1.0\u00e9")}};
        QTest::newRow("10146") << QStringLiteral("velmora://app/10146/X/1") << true
                               << map("{'vld_install_from_link':'2'}");
        QTest::newRow("five parts") << QStringLiteral("velmora://app/5001/Foo") << false << QVariantMap();
        QTest::newRow("bundle link") << QStringLiteral("velmora://bundle/12") << false << QVariantMap();
        QTest::newRow("no id") << QStringLiteral("velmora://app//Foo/1") << false << QVariantMap();
    }

    void initWithLink()
    {
        QFETCH(QString, link);
        QFETCH(bool, made);
        QFETCH(QVariantMap, expected);
        const std::optional<VLApp> app = VLApp::initWithLink(link);
        QCOMPARE(app.has_value(), made);
        if (app) {
            checkFields(*app, expected);
            QVERIFY(QRegularExpression(QStringLiteral("^[0-9]+$")).match(app->sortDate).hasMatch());
        }
    }

    void matchDateIsWrittenInUtc()
    {
        const QRegularExpression format(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\+0000$"));
        QVERIFY(format.match(VLApp::initWithServerItemJSON(map("{'m':'1'}")).lastmatched).hasMatch());
        QVERIFY(format.match(VLApp::initWithLink(QStringLiteral("velmora://app/1/A/1"))->lastmatched).hasMatch());
        VLApp app = VLApp::initWithWatchListItem(map("{'vl_id':'1'}"));
        app.updateWithServerItem(map("{'vl_id':'1'}"));
        QVERIFY(format.match(app.lastmatched).hasMatch());
    }

    void catalogueIconPath_data()
    {
        QTest::addColumn<QString>("digest");
        QTest::addColumn<bool>("usable");
        QTest::newRow("digest") << md5HexHash(QStringLiteral("5001")) << true;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("dot dot") << QStringLiteral("..") << false;
        QTest::newRow("path") << QStringLiteral("a/b") << false;
    }

    void catalogueIconPath()
    {
        QFETCH(QString, digest);
        QFETCH(bool, usable);
        const QString path = VLApp::catalogueIconPath(digest);
        QCOMPARE(!path.isEmpty(), usable);
        if (usable) {
            QVERIFY(path.endsWith(QStringLiteral("/Velmora/Velmora Desktop 6/mcache_600/") + digest));
        }
    }

    // A catalogue record shows an icon already in the cache at once; without one it has the generic icon.
    void createdRecordsUseCachedIcons()
    {
        QCOMPARE(VLApp::initWithServerItemJSON(map("{'m':'6001'}")).appIcon, QStringLiteral(""));
        const QString cached = VLApp::catalogueIconPath(md5HexHash(QStringLiteral("6001")));
        QVERIFY(QDir().mkpath(QFileInfo(cached).path()));
        QFile file(cached);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QCOMPARE(VLApp::initWithServerItemJSON(map("{'m':'6001'}")).appIcon, cached);
        QCOMPARE(VLApp::initWithPromoItem(map("{'prod_id':'6001'}")).appIcon, cached);
        QCOMPARE(VLApp::initWithLink(QStringLiteral("velmora://app/6001/A/1"))->appIcon, cached);
    }

    void archiveKeepsTheHash()
    {
        const VLApp app = VLApp::initWithServerItemJSON(map("{'m':'1','e1':'http://h/f.zip','filehash':'abc'}"));
        QCOMPARE(VLApp::initWithCoder(app.encodeWithCoder()).filehash, QStringLiteral("abc"));
    }
};

VELMORA_TEST_MAIN(TestCatalogueIngestion)
#include "TestCatalogueIngestion.moc"
