#include "support/BundleTree.h"
#include "support/TestMain.h"

#include "model/StringUtils.h"

#include <QTemporaryDir>

namespace {

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

QByteArray b(const char *text, qsizetype size)
{
    return QByteArray(text, size);
}

// A lone high surrogate: text with no UTF-8 form.
const QString unpaired = QString(QChar(0xd800));

} // namespace

class TestStringUtils : public QObject
{
    Q_OBJECT

private slots:
    // The text helpers side by side: each must keep absent (null) and empty ("") apart.
    void textHelpers_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("expected");
        QTest::newRow("trim") << s("trim") << s(" \t a b \r\n") << s("a b");
        QTest::newRow("trim to empty") << s("trim") << s("\n\t ") << s("");
        QTest::newRow("trim absent") << s("trim") << QString() << QString();
        QTest::newRow("returns, blanks kept") << s("returns") << s(" a\tb\rc\n ") << s(" abc ");
        QTest::newRow("returns to empty") << s("returns") << s("\t\r\n") << s("");
        QTest::newRow("returns absent") << s("returns") << QString() << QString();
        QTest::newRow("url escapes reserved")
            << s("url") << s("a b&c=d+e/f?g#h%") << s("a%20b%26c%3Dd%2Be%2Ff%3Fg%23h%25");
        QTest::newRow("url keeps unreserved") << s("url") << s("AZaz09-._~") << s("AZaz09-._~");
        QTest::newRow("url control") << s("url") << s("\x7f\x01") << s("%7F%01");
        QTest::newRow("url non-ASCII") << s("url") << s("caf\u00e9") << QString();
        QTest::newRow("url empty") << s("url") << s("") << s("");
        QTest::newRow("url absent") << s("url") << QString() << QString();
        QTest::newRow("html bare ampersand") << s("html") << s("Tom & Jerry") << s("Tom & Jerry");
        QTest::newRow("html entities stay") << s("html") << s("1 &lt; 2&nbsp;") << s("1 &lt; 2&nbsp;");
        QTest::newRow("html nested") << s("html") << s("<p>one <i>two</i></p><p>three</p>") << s("one twothree");
        QTest::newRow("html error truncates") << s("html") << s("<b>bold</i> lost") << s("bold");
        QTest::newRow("html unclosed tag") << s("html") << s("line<br>next") << s("linenext");
        QTest::newRow("html empty") << s("html") << s("") << s("");
        QTest::newRow("html absent") << s("html") << QString() << QString();
        QTest::newRow("title") << s("title") << s("C++ Builder_X 2!") << s("c-builder-x-2");
        QTest::newRow("title ends") << s("title") << s("  --Hello,  World--  ") << s("hello-world");
        QTest::newRow("title non-ASCII") << s("title") << s("Caf\u00e9 Cr\u00e8me") << s("caf-cr-me");
        QTest::newRow("title nothing left") << s("title") << s("!!!") << s("");
        QTest::newRow("title absent") << s("title") << QString() << QString();
    }
    void textHelpers()
    {
        QFETCH(QString, function);
        QFETCH(QString, input);
        QFETCH(QString, expected);
        QString actual;
        if (function == u"trim")
            actual = trimmedString(input);
        else if (function == u"returns")
            actual = removeTabsAndReturns(input);
        else if (function == u"url")
            actual = urlEncodeValue(input);
        else if (function == u"html")
            actual = stripHtml(input);
        else
            actual = urlTitle(input);
        QCOMPARE(actual, expected);
        QCOMPARE(actual.isNull(), expected.isNull());
    }

    void containsString_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("other");
        QTest::addColumn<bool>("ignoringCase");
        QTest::addColumn<bool>("expected");
        QTest::newRow("found") << s("Hello") << s("ell") << false << true;
        QTest::newRow("case sensitive") << s("Hello") << s("ELL") << false << false;
        QTest::newRow("case ignored") << s("Hello") << s("ELL") << true << true;
        QTest::newRow("empty never found") << s("Hello") << s("") << false << false;
        QTest::newRow("absent never found") << s("Hello") << QString() << true << false;
    }
    void containsString()
    {
        QFETCH(QString, text);
        QFETCH(QString, other);
        QFETCH(bool, ignoringCase);
        QFETCH(bool, expected);
        QCOMPARE(::containsString(text, other, ignoringCase), expected);
    }

    void hashes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("md5");
        QTest::addColumn<QString>("sha1");
        QTest::newRow("empty") << s("") << s("d41d8cd98f00b204e9800998ecf8427e")
                               << s("da39a3ee5e6b4b0d3255bfef95601890afd80709");
        QTest::newRow("UTF-8") << s("\u00e9") << s("66ddcd97cfdeabb2f6fb8a999b4bc76f")
                               << s("bf15be717ac1b080b4f1c456692825891ff5073d");
        QTest::newRow("absent") << QString() << QString() << QString();
        QTest::newRow("unpaired surrogate") << unpaired << QString() << QString();
    }
    void hashes()
    {
        QFETCH(QString, text);
        QFETCH(QString, md5);
        QFETCH(QString, sha1);
        QCOMPARE(md5HexHash(text), md5);
        QCOMPARE(md5HexHash(text).isNull(), md5.isNull());
        QCOMPARE(sha1HexHash(text), sha1);
        QCOMPARE(QString::fromLatin1(md5Hash(text).toHex()), md5);
        QCOMPARE(QString::fromLatin1(sha1Hash(text).toHex()), sha1);
        QCOMPARE(md5Hash(text).isNull(), md5.isNull());
        if (!md5.isNull()) {
            const QByteArray bytes = text.toUtf8();
            QCOMPARE(md5HexHash(bytes), md5);
            QCOMPARE(sha1HexHash(bytes), sha1);
            QCOMPARE(md5Hash(bytes).size(), 16);
            QCOMPARE(sha1Hash(bytes).toHex(), sha1.toLatin1());
        }
    }

    void base64_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("encoded");
        QTest::newRow("empty") << QByteArray() << s("");
        QTest::newRow("plus and slash") << b("\x00\xfb\xff\xfe", 4) << s("APv//g==");
    }
    void base64()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, encoded);
        QCOMPARE(base64Encoding(bytes), encoded);
        QVERIFY(!base64Encoding(bytes).isNull());
        QCOMPARE(dataWithBase64EncodedString(encoded), bytes);
        // Line breaks and stray characters in stored base64 must not stop the decoder.
        QCOMPARE(dataWithBase64EncodedString(encoded.left(2) + s("\r\n *") + encoded.mid(2)), bytes);
    }

    void pascalString_data()
    {
        QTest::addColumn<QByteArray>("pascal");
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero length") << b("\x00", 1) << QByteArray("ISO-8859-1") << s("");
        QTest::newRow("extra bytes ignored") << QByteArray("\x02"
                                                           "abc")
                                             << QByteArray("UTF-8") << s("ab");
        QTest::newRow("Latin-1") << QByteArray("\x01\xe9") << QByteArray("ISO-8859-1") << s("\u00e9");
        QTest::newRow("UTF-8") << QByteArray("\x02\xc3\xa9") << QByteArray("UTF-8") << s("\u00e9");
        QTest::newRow("bad UTF-8") << QByteArray("\x01\xff") << QByteArray("UTF-8") << QString();
        QTest::newRow("shorter than its length") << QByteArray("\x03"
                                                               "ab")
                                                 << QByteArray("UTF-8") << QString();
        QTest::newRow("no bytes") << QByteArray() << QByteArray("UTF-8") << QString();
        QTest::newRow("unknown encoding") << QByteArray("\x01x") << QByteArray("no-such-encoding") << QString();
    }
    void pascalString()
    {
        QFETCH(QByteArray, pascal);
        QFETCH(QByteArray, encoding);
        QFETCH(QString, text);
        const QString decoded = stringWithPascalString(pascal, encoding.constData());
        QCOMPARE(decoded, text);
        QCOMPARE(decoded.isNull(), text.isNull());
    }

    void pascalBuffer_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("size");
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<QByteArray>("expected"); // empty: refused, buffer untouched
        QTest::newRow("Latin-1, fits exactly")
            << s("h\u00e9llo") << 6 << QByteArray("ISO-8859-1") << QByteArray("\x05h\xe9llo");
        QTest::newRow("one byte short") << s("h\u00e9llo") << 5 << QByteArray("ISO-8859-1") << QByteArray();
        QTest::newRow("empty text") << s("") << 1 << QByteArray("UTF-8") << b("\x00", 1);
        QTest::newRow("not Latin-1") << s("\u20ac") << 8 << QByteArray("ISO-8859-1") << QByteArray();
        QTest::newRow("UTF-8") << s("\u20ac") << 8 << QByteArray("UTF-8") << QByteArray("\x03\xe2\x82\xac");
        QTest::newRow("255 bytes") << QString(255, u'x') << 300 << QByteArray("UTF-8")
                                   << (QByteArray(1, '\xff') + QByteArray(255, 'x'));
        QTest::newRow("256 bytes") << QString(256, u'x') << 300 << QByteArray("UTF-8") << QByteArray();
        QTest::newRow("absent") << QString() << 8 << QByteArray("UTF-8") << QByteArray();
    }
    void pascalBuffer()
    {
        QFETCH(QString, text);
        QFETCH(int, size);
        QFETCH(QByteArray, encoding);
        QFETCH(QByteArray, expected);
        QByteArray buffer(size + 4, '#'); // the tail shows that nothing is written past size
        const bool written = convertToPascalStringInBuffer(text, buffer.data(), size, encoding.constData());
        QCOMPARE(written, !expected.isEmpty());
        if (written) {
            QCOMPARE(buffer.left(expected.size()), expected);
            QCOMPARE(stringWithPascalString(buffer, encoding.constData()), text);
        } else {
            QCOMPARE(buffer, QByteArray(size + 4, '#'));
        }
    }

    void isValidURL_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("https") << s("https://example.com/a?b=1#c") << true;
        QTest::newRow("mailto") << s("mailto:someone@example.com") << true;
        QTest::newRow("no scheme") << s("example.com/path") << false;
        QTest::newRow("blank in host") << s("http://exa mple.com/") << false;
        QTest::newRow("empty") << s("") << false;
    }
    void isValidURL()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QCOMPARE(::isValidURL(text), valid);
    }

    void safeFilePath_data()
    {
        QTest::addColumn<QStringList>("existing");
        QTest::addColumn<QString>("wanted");
        QTest::addColumn<QString>("expected");
        QTest::newRow("free") << QStringList() << s("a.zip") << s("a.zip");
        QTest::newRow("taken") << QStringList{s("a.zip")} << s("a.zip") << s("a 2.zip");
        QTest::newRow("next free") << QStringList{s("a.zip"), s("a 2.zip"), s("a 3.zip")} << s("a.zip") << s("a 4.zip");
        QTest::newRow("last extension only") << QStringList{s("a.tar.gz")} << s("a.tar.gz") << s("a.tar 2.gz");
        QTest::newRow("folder") << QStringList{s("Foo.app/")} << s("Foo.app") << s("Foo 2.app");
        QTest::newRow("no extension") << QStringList{s("README")} << s("README") << s("README 2");
        QTest::newRow("hidden file") << QStringList{s(".hidden")} << s(".hidden") << s(".hidden 2");
        QTest::newRow("dangling link") << QStringList{s("gone.dmg@")} << s("gone.dmg") << s("gone 2.dmg");
        QTest::newRow("percent in name") << QStringList{s("%1 %2.zip")} << s("%1 %2.zip") << s("%1 %2 2.zip");
    }
    void safeFilePath()
    {
        QFETCH(QStringList, existing);
        QFETCH(QString, wanted);
        QFETCH(QString, expected);
        QTemporaryDir folder;
        BundleTree tree(folder.path());
        // "name/" makes a folder, "name@" a link to nothing, anything else an empty file.
        for (const QString &name : existing) {
            if (name.endsWith(u'/'))
                tree.addFolder(name.chopped(1));
            else if (name.endsWith(u'@'))
                tree.addSymlink(name.chopped(1), tree.path(s("missing")));
            else
                tree.addFile(name);
        }
        QCOMPARE(::safeFilePath(tree.path(wanted)), tree.path(expected));
    }
};

VELMORA_TEST_MAIN(TestStringUtils)
#include "TestStringUtils.moc"
