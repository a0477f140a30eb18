// The service's rules that are easier to pin down without HTTP: decoding, the catalogue mapping, match
// ranking, the catalogue in memory after an import, and the password box.

#include "catalogue/CatalogueCache.h"
#include "catalogue/CatalogueFile.h"
#include "catalogue/CatalogueIndex.h"
#include "catalogue/PublicCatalogueMapping.h"
#include "members/SecretBox.h"
#include "storage/OpenStorage.h"
#include "storage/Schema.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"
#include "wire/FormBody.h"
#include "wire/PathSegments.h"
#include "wire/Zlib.h"
#include "wire/ZlibJoin.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace {

// JSON written with single quotes.
QJsonObject json(const char *singleQuoted)
{
    return QJsonDocument::fromJson(QByteArray(singleQuoted).replace('\'', '"')).object();
}

CatalogueEntry entry(const char *id, const char *record)
{
    CatalogueEntry e;
    e.id = QString::fromLatin1(id);
    e.record = json(record);
    e.isBeta = e.record.value(QStringLiteral("stability")).toString() == QLatin1StringView("beta");
    return e;
}

} // namespace

class TestServiceRules : public QObject
{
    Q_OBJECT

private slots:
    void percentDecoding_data()
    {
        // A null expected: refused.
        columns<QByteArray, bool, QString>("raw", "plusIsSpace", "expected");
        QTest::newRow("plus as space") << QByteArray("a+b") << true << QStringLiteral("a b");
        QTest::newRow("plus kept") << QByteArray("a+b") << false << QStringLiteral("a+b");
        QTest::newRow("UTF-8 escapes") << QByteArray("%C3%A9t%C3%A9") << true << QStringLiteral("été");
        QTest::newRow("lower-case hex") << QByteArray("%2f%3a") << true << QStringLiteral("/:");
        QTest::newRow("truncated escape") << QByteArray("abc%4") << true << QString();
        QTest::newRow("not hex") << QByteArray("%G0") << true << QString();
        QTest::newRow("not UTF-8") << QByteArray("%C3%28") << true << QString();
    }

    void percentDecoding()
    {
        auto [raw, plusIsSpace, expected] = fetch<QByteArray, bool, QString>("raw", "plusIsSpace", "expected");
        const auto decoded = Percent::decode(raw, plusIsSpace);
        QCOMPARE(decoded.has_value(), !expected.isNull());
        if (decoded)
            QCOMPARE(*decoded, expected);
    }

    void formFieldsRawAndDecoded()
    {
        const auto form = FormBody::parse("issue=aGk+dA==&m=-1&appname=A%26B&path=/Apps/A&B.app&x=1");
        QVERIFY(form);
        QCOMPARE(form->raw(QStringLiteral("issue")), QStringLiteral("aGk+dA=="));
        QCOMPARE(*form->decoded(QStringLiteral("appname")), QStringLiteral("A&B"));
        QCOMPARE(form->rawToEnd(QStringLiteral("path")), QStringLiteral("/Apps/A&B.app&x=1"));
        QVERIFY(!form->decoded(QStringLiteral("missing")));
        QCOMPARE(*FormBody::jsonObject("a={\"k\":\"v & w\"}", "a"),
                 (QJsonObject{{QStringLiteral("k"), QStringLiteral("v & w")}}));
        QCOMPARE(*FormBody::jsonObject("a=%7B%22k%22%3A1%7D", "a"), (QJsonObject{{QStringLiteral("k"), 1}}));
        QVERIFY(!FormBody::jsonObject("b={}", "a"));
    }

    void pathPairs_data()
    {
        // A null value: not parsed.
        columns<QByteArray, QString, QString>("target", "key", "value");
        row("encoded slash stays in its value", QByteArray("/m/signup/e/a%40b.co/p/x%2Fy/f/A/l/B"), "p", "x/y");
        row("rest key takes the rest", QByteArray("/m/signup/e/a/p/b/utmz/ab/cd+="), "utmz", "ab/cd+=");
        row("query left out", QByteArray("/m/x/u/1?p=2"), "u", "1");
        row("key without value", QByteArray("/m/x/u/1/p"), "u", QString());
        row("bad escape", QByteArray("/m/x/u/%zz"), "u", QString());
    }

    void pathPairs()
    {
        auto [target, key, value] = fetch<QByteArray, QString, QString>("target", "key", "value");
        const auto segments = PathSegments::split(target.toStdString());
        const auto pairs = segments ? PathSegments::pairs(*segments, 2, QStringLiteral("utmz")) : std::nullopt;
        QCOMPARE(pairs.has_value(), !value.isNull());
        if (pairs)
            QCOMPARE(pairs->value(key), value);
    }

    void importRefusesTwoRecordsOfOneId_data()
    {
        columns<QByteArray, QString>("json", "named");
        row("same id", QByteArray(R"([{"name":"A","vl_id":"7001"},{"name":"B","vl_id":7001}])"),
            "records 0 and 1 have the same catalogue id 7001");
        row("same key", QByteArray(R"({"apps":[{"name":"A","key":"k"},{"name":"C"},{"name":"B","key":"k"}]})"),
            "records 0 and 2 have the same key key:k");
    }

    void importRefusesTwoRecordsOfOneId()
    {
        auto [json, named] = fetch<QByteArray, QString>("json", "named");
        QString error;
        QVERIFY(!CatalogueFile::parse(json, &error));
        QCOMPARE(error, named);
    }

    void minimumOsVersion_data()
    {
        // json: the value of min_macos, as JSON.
        columns<QByteArray, QString>("json", "expected");
        row("el_capitan", QByteArray("\">= :el_capitan\""), "10.11");
        row("tahoe", QByteArray("\">= :tahoe\""), "26.0");
        row("a list: the oldest", QByteArray("[\":sonoma\", \":catalina\", \":big_sur\"]"), "10.15");
        row("a ceiling is no minimum", QByteArray("\"<= :sonoma\""), QString());
        row("a number", QByteArray("\">= \\\"10.9\\\"\""), "10.9");
        row("unknown name", QByteArray("\">= :nothing\""), QString());
        row("none", QByteArray("null"), QString());
    }

    void minimumOsVersion()
    {
        auto [json, expected] = fetch<QByteArray, QString>("json", "expected");
        const QJsonValue value = QJsonDocument::fromJson("[" + json + "]").array().at(0);
        QCOMPARE(PublicCatalogueMapping::minimumOsVersion(value), expected);
    }

    void publicRecordMapping()
    {
        const QJsonObject source = json(
            "{'token':'foo@beta','name':'Foo','names':['Foo','Foo Pro'],'desc':'Does foo','version':'2.1,300',"
            "'version_display':'2.1','version_latest':false,'sha256':null,'url':'https://example.com/foo-#{arch}.zip',"
            "'url_resolved':false,'url_by_arch':{'intel':'https://example.com/foo-x86.zip',"
            "'arm':'https://example.com/foo-arm.zip'},'sha256_by_arch':{'intel':'AA','arm':'BB'},"
            "'artifact_names':['Foo Helper.app'],'bundle_ids':['com.example.foo'],'min_macos':'>= :monterey'}");
        const QJsonObject record = PublicCatalogueMapping::map(source);
        QCOMPARE(record.value(QStringLiteral("current_version")).toString(), QStringLiteral("2.1"));
        QCOMPARE(record.value(QStringLiteral("link")).toString(), QStringLiteral("https://example.com/foo-arm.zip"));
        QCOMPARE(record.value(QStringLiteral("filehash")).toString(), QStringLiteral("bb"));
        QCOMPARE(record.value(QStringLiteral("min_os")).toString(), QStringLiteral("12.0"));
        QCOMPARE(record.value(QStringLiteral("stability")).toString(), QStringLiteral("beta"));
        QCOMPARE(record.value(QStringLiteral("display_names")).toArray(),
                 QJsonArray({QStringLiteral("Foo"), QStringLiteral("Foo Pro"), QStringLiteral("Foo Helper")}));
        QString error;
        QVERIFY(CatalogueFile::readRecord(record, &error));

        // "latest" is no version; without a usable link the app cannot be installed from a link.
        const QJsonObject latest = PublicCatalogueMapping::map(
            json("{'token':'bar','name':'Bar','version':'latest','version_display':'latest','version_latest':true,"
                 "'url':'https://example.com/#{x}','url_resolved':false}"));
        QVERIFY(!latest.contains(QStringLiteral("current_version")));
        QVERIFY(!latest.contains(QStringLiteral("link")));
        QCOMPARE(latest.value(QStringLiteral("vld_install_from_link")).toString(), QStringLiteral("2"));
    }

    void rankingAmongClaimants_data()
    {
        columns<QString, QString>("bundleId", "expected");
        row("release over beta at the same place", "com.example.app", "12");
        row("earlier in its own list wins", "com.example.helper", "10");
        row("older id when all else is equal", "com.example.tool", "14");
    }

    void rankingAmongClaimants()
    {
        auto [bundleId, expected] = fetch<QString, QString>("bundleId", "expected");
        std::vector<CatalogueEntry> entries;
        entries.push_back(
            entry("11", "{'name':'B','stability':'beta','bundle_ids':['com.example.app','com.example.helper']}"));
        entries.push_back(entry("12", "{'name':'C','bundle_ids':['com.example.app']}"));
        entries.push_back(entry("10", "{'name':'A','bundle_ids':['com.example.helper','com.example.app']}"));
        entries.push_back(entry("15", "{'name':'E','bundle_ids':['com.example.tool']}"));
        entries.push_back(entry("14", "{'name':'D','bundle_ids':['com.example.tool']}"));
        const CatalogueIndex index(std::move(entries));
        const CatalogueEntry *match = index.match({bundleId.toUtf8(), {}, {}});
        QVERIFY(match);
        QCOMPARE(match->id, expected);
    }

    // Each process keeps its catalogue for a while without asking the store; an import has waited that out by the
    // time it reports, so the other process's next request sees it.
    void importSeenByAnotherProcessRightAway()
    {
        QTemporaryDir dir;
        QString error;
        const auto db = openDatabase(dir.filePath(QStringLiteral("service.sqlite")), std::chrono::seconds(1), &error);
        QVERIFY2(db, qPrintable(error));
        QVERIFY2(Schema::migrate(*db, &error), qPrintable(error));
        const auto storage = storageOver(db);
        CatalogueCache otherProcess(*storage->catalogue, QString());
        QVERIFY(!otherProcess.current()->match({"org.example.zeta", {}, {}}));
        const QString path = dir.filePath(QStringLiteral("more.json"));
        QVERIFY(PlistFiles::writeFile(
            path, R"([{"name":"Zeta Tool","key":"zeta","current_version":"1.2","bundle_ids":["org.example.zeta"]}])"));
        QVERIFY(CatalogueFile::importFile(*storage->catalogue, path).error.isEmpty());
        QVERIFY(otherProcess.current()->match({"org.example.zeta", {}, {}}));
    }

    void secretBox()
    {
        QTemporaryDir dir;
        QString error;
        const QString keyFile = dir.filePath(QStringLiteral("keys/member.key"));
        const auto box = SecretBox::open(keyFile, &error);
        QVERIFY2(box, qPrintable(error));
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                                          QFile::WriteOther | QFile::ExeOther;
        QVERIFY(!(QFile::permissions(keyFile) & others)); // the key is for its owner only
        const QByteArray sealed = box->seal("pässword");
        QVERIFY(!sealed.contains("pässword"));
        QCOMPARE(*box->unseal(sealed), QByteArray("pässword"));
        QVERIFY(box->seal("pässword") != sealed); // a fresh nonce each time
        QByteArray tampered = sealed;
        tampered[tampered.size() - 1] = char(tampered.back() ^ 1);
        QVERIFY(!box->unseal(tampered));
        // The same key file opens the same box; another key does not.
        QCOMPARE(*SecretBox::open(keyFile, &error)->unseal(sealed), QByteArray("pässword"));
        QVERIFY(!SecretBox::open(dir.filePath(QStringLiteral("other.key")), &error)->unseal(sealed));
    }

    // A reply joined from stored text and fragments compressed apart is one stream that inflates (checksum included)
    // to the pieces in order. "f:" marks a fragment.
    void joinedZlibStream_data()
    {
        QTest::addColumn<QList<QByteArray>>("pieces");
        QTest::newRow("nothing") << QList<QByteArray>{};
        QTest::newRow("stored only") << QList<QByteArray>{"{", "\"1\":2", "}"};
        QTest::newRow("fragments only") << QList<QByteArray>{"f:{\"a\":1,", "f:\"a\":1,\"a\":1}"};
        QTest::newRow("empty fragment") << QList<QByteArray>{"{", "f:", "}"};
        QTest::newRow("mixed, repeats") << QList<QByteArray>{"{", "f:" + QByteArray(3000, 'x'), ",", "f:xyz", "}"};
        QTest::newRow("stored over one block") << QList<QByteArray>{QByteArray(70000, 'q'), "f:tail", "z"};
    }
    void joinedZlibStream()
    {
        QFETCH(QList<QByteArray>, pieces);
        ZlibJoin join;
        QByteArray whole;
        for (const QByteArray &piece : pieces) {
            if (piece.startsWith("f:")) {
                join.append(ZlibJoin::fragment(piece.mid(2)));
                whole += piece.mid(2);
            } else {
                join.text().append(piece);
                whole += piece;
            }
        }
        const QByteArray stream = join.finish();
        const auto inflated =
            Zlib::inflate(std::string_view(stream.constData(), size_t(stream.size())), Zlib::Wrapper::Zlib, 1 << 20);
        QVERIFY(std::holds_alternative<std::string>(inflated));
        QCOMPARE(QByteArray::fromStdString(std::get<std::string>(inflated)), whole);
    }
};

VELMORA_TEST_MAIN(TestServiceRules)
#include "TestServiceRules.moc"
