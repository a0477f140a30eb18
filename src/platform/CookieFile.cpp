#include "platform/CookieFile.h"

#include "platform/AppPaths.h"
#include "platform/AtomicFile.h"
#include "platform/FileBytes.h"
#include "platform/HttpCookieJar.h"
#include "platform/Log.h"

#include <QDateTime>
#include <QNetworkCookie>

namespace {

constexpr qint64 kMaxFileBytes = 4 * 1024 * 1024;

QByteArray persistentCookies()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QByteArray lines;
    for (const QNetworkCookie &cookie : HttpCookieJar::shared().cookies()) {
        if (!cookie.isSessionCookie() && cookie.expirationDate() > now) {
            lines += cookie.toRawForm(QNetworkCookie::Full) + '\n';
        }
    }
    return lines;
}

QByteArray fileContents()
{
    return FileBytes::read(CookieFile::path(), kMaxFileBytes).bytes.value_or(QByteArray());
}

} // namespace

namespace CookieFile {

QString path()
{
    return AppPaths::dataFolder() + QStringLiteral("/cookies");
}

void load()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    HttpCookieJar &jar = HttpCookieJar::shared();
    for (const QByteArray &line : fileContents().split('\n')) {
        for (const QNetworkCookie &cookie : QNetworkCookie::parseCookies(line)) {
            if (cookie.expirationDate() > now) {
                jar.insertCookie(cookie);
            }
        }
    }
}

bool save()
{
    const QByteArray contents = persistentCookies();
    if (contents == fileContents()) {
        return true;
    }
    const AtomicFile::Result written = AtomicFile::write(path(), contents);
    if (!written.ok) {
        // The path only: the contents are secrets.
        vlLog(QStringLiteral("Cookie file write error %1 %2").arg(path(), written.reason));
    }
    return written.ok;
}

} // namespace CookieFile
