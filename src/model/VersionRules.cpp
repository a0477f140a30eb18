#include "model/VersionRules.h"

#include "model/RecordText.h"
#include "model/StringUtils.h"

#include <QStringView>

namespace {

// Only ASCII digits count: version texts use them, and other scripts' digits must not start a version.
bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isSeparator(QChar c)
{
    return c == u'.' || c == u'_' || c == u'-';
}

qsizetype digitRunLength(QStringView text, qsizetype from)
{
    qsizetype end = from;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    return end - from;
}

// The rules were written against a search that never finds an empty text: "1.0" does not contain "".
bool containsText(const QString &text, const QString &part)
{
    return !part.isEmpty() && text.contains(part);
}

// Compares two digit runs by value, whatever their length, so a 40-digit build number cannot overflow.
int compareDigitRuns(QStringView a, QStringView b)
{
    while (a.size() > 1 && a.front() == u'0')
        a = a.mid(1);
    while (b.size() > 1 && b.front() == u'0')
        b = b.mid(1);
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

VersionOrder orderFromSign(int sign)
{
    return sign < 0 ? VersionAscending : sign > 0 ? VersionDescending : VersionSame;
}

// Length of the case-insensitive common prefix, never ending inside a surrogate pair.
qsizetype commonPrefixLength(QStringView a, QStringView b)
{
    const qsizetype limit = qMin(a.size(), b.size());
    qsizetype length = 0;
    while (length < limit && a[length].toCaseFolded() == b[length].toCaseFolded())
        ++length;
    if (length > 0 && a[length - 1].isHighSurrogate())
        --length;
    return length;
}

bool startsWithSeparatorOrDigit(const QString &text)
{
    return !text.isEmpty() && (isSeparator(text.front()) || isDigit(text.front()));
}

// One cleaning step: from the first digit up to the stop text. An empty stop text keeps everything
// from the first digit; a text without digits, or a cut that would keep nothing, is left alone.
QString cutAtStopText(const QString &text, QStringView stop)
{
    const qsizetype start = firstDigit(text);
    if (start < 0)
        return text;
    const QStringView rest = QStringView(text).mid(start);
    const qsizetype end = stop.isEmpty() ? -1 : rest.indexOf(stop);
    if (end == 0)
        return text;
    return (end < 0 ? rest : rest.left(end)).toString();
}

// Applied in this order, each to what the previous ones left. ",6.0.4", "G" and "Int" look odd but
// are kept: installed versions such as "1.0G4" have always been read this way.
constexpr QStringView stopTexts[] = {
    u"",       u" -",      u"Demo",     u" for",      u" by",      u" stable", u".Copy",
    u"Copy",   u" (Build", u" [Build",  u"Universal", u".release", u" build",  u"build",
    u",6.0.4", u", Build", u" Release", u" release",  u" PowerPC", u" Intel",  u"Int",
    u".app",   u" Mac",    u"G",        u" (",        u", ",       u"x86_",    u"\u00a9",
};

} // namespace

QString cleanVersionString(const QString &version)
{
    QString text = version.isNull() ? RecordText::unknown : version;
    for (const QStringView stop : stopTexts)
        text = cutAtStopText(text, stop);

    if (text.contains(u'V') && !text.contains(u' ')) {
        const qsizetype start = firstDigit(text);
        if (start > 0)
            text = text.mid(start);
    }
    if (text.endsWith(u','))
        text.chop(1);
    text = text.trimmed();
    return text.isNull() ? RecordText::empty : text;
}

VersionOrder orderCompareString(const QString &a, const QString &b)
{
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            const qsizetype runA = digitRunLength(a, i);
            const qsizetype runB = digitRunLength(b, j);
            const int sign = compareDigitRuns(QStringView(a).mid(i, runA), QStringView(b).mid(j, runB));
            if (sign != 0)
                return orderFromSign(sign);
            i += runA;
            j += runB;
            continue;
        }
        const char16_t x = a[i].toCaseFolded().unicode();
        const char16_t y = b[j].toCaseFolded().unicode();
        if (x != y)
            return x < y ? VersionAscending : VersionDescending;
        ++i;
        ++j;
    }
    if (i < a.size())
        return VersionDescending;
    if (j < b.size())
        return VersionAscending;
    return VersionSame;
}

VersionOrder compareVersionString(const QString &a, const QString &b)
{
    if (a == b)
        return VersionSame;
    qsizetype prefix = commonPrefixLength(a, b);
    if (prefix == 0)
        return orderCompareString(a, b);

    QString restA = a;
    QString restB = b;
    while (prefix > 0) {
        restA = restA.mid(prefix).trimmed();
        restB = restB.mid(prefix).trimmed();
        prefix = commonPrefixLength(restA, restB);
    }

    if (restA.isEmpty() && restB.isEmpty())
        return VersionSame;
    // A bare end against more text: more numbers mean newer (1.2 < 1.2.1), a letter means a
    // pre-release suffix (1.2b < 1.2).
    if (restA.isEmpty())
        return startsWithSeparatorOrDigit(restB) ? VersionAscending : VersionDescending;
    if (restB.isEmpty())
        return startsWithSeparatorOrDigit(restA) ? VersionDescending : VersionAscending;

    const qsizetype runA = digitRunLength(restA, 0);
    const qsizetype runB = digitRunLength(restB, 0);
    if (runA > 0 && runB > 0)
        return orderCompareString(restA.left(runA), restB.left(runB));
    if (runA == 0 && runB == 0)
        return isSeparator(restA.front()) ? VersionDescending : VersionAscending;
    return runA > 0 ? VersionDescending : VersionAscending;
}

bool isLocalVersionOutdatedByRemoteVersion(const QString &localVersion, const QString &remoteVersion)
{
    // 1. Nothing known about the catalogue version.
    if (remoteVersion.isNull() || remoteVersion == u"(null)" || remoteVersion == RecordText::unknown)
        return false;
    // An unknown installed version is never reported as outdated.
    if (localVersion.isNull())
        return false;

    // 2.
    QString local = localVersion.trimmed();
    const QString remote = remoteVersion.trimmed();
    if (local == RecordText::unknown || local == remote)
        return false;

    // 3. "1.23" against "1.2.4": the catalogue split the minor number, compare its last digit.
    if (local.size() == 4 && remote.size() == 5 && local.contains(remote.left(3)) && remote[4] > local[3])
        return true;

    // 4. The final release supersedes its release candidate.
    if (local.toLower().contains(u"rc") && containsText(local, remote) && !containsText(remote, local))
        return true;

    // 5. Bring "1.0 beta 2" to the short "1.0b2" when the catalogue writes betas that way.
    const QString lowerRemote = remote.toLower();
    if (local.toLower().contains(u"beta") && lowerRemote.contains(u'b') && !lowerRemote.contains(u"beta")) {
        local = local.toLower();
        local.replace(QStringLiteral(" beta "), QStringLiteral("b"));
        local.replace(QStringLiteral("beta"), QStringLiteral("b"));
    }
    const QString lowerLocal = local.toLower();

    // 6. A beta is older than a release candidate.
    if (lowerLocal.contains(u'b') && lowerRemote.contains(u"rc"))
        return true;

    // 7. and 8.
    if (local + u".0" == remote)
        return false;
    if (local + u'a' == remote)
        return true;

    // 9. "2.0.BETA-3" against "2.0": judge the part before the beta mark. Without the upper-case
    // mark there is nothing shorter to judge, so the next rule decides rather than looping forever.
    if (lowerLocal.contains(u".beta-") && containsText(local, remote) && local != remote) {
        const qsizetype mark = local.indexOf(u".BETA");
        if (mark >= 0) {
            const QString release = local.left(mark);
            if (release == remote)
                return true;
            return isLocalVersionOutdatedByRemoteVersion(release, remote);
        }
    }

    // 10. A beta of the catalogue's version is older than it.
    if (lowerLocal.contains(u'b') && containsText(local, remote) && local != remote)
        return true;

    // 11.
    return compareVersionString(local, remote) == VersionAscending;
}

QString cleanOSVersion(const QString &text)
{
    const qsizetype start = firstDigit(text);
    if (start < 0)
        return RecordText::empty;
    qsizetype end = start;
    while (end < text.size() && !text[end].isSpace())
        ++end;
    return text.mid(start, end - start);
}
