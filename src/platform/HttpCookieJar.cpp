#include "platform/HttpCookieJar.h"

#include <QMutexLocker>

HttpCookieJar &HttpCookieJar::shared()
{
    static HttpCookieJar jar;
    return jar;
}

QList<QNetworkCookie> HttpCookieJar::cookies() const
{
    const QMutexLocker lock(&m_mutex);
    return allCookies();
}

void HttpCookieJar::setCookies(const QList<QNetworkCookie> &cookies)
{
    const QMutexLocker lock(&m_mutex);
    setAllCookies(cookies);
}

QList<QNetworkCookie> HttpCookieJar::cookiesForUrl(const QUrl &url) const
{
    const QMutexLocker lock(&m_mutex);
    return QNetworkCookieJar::cookiesForUrl(url);
}

bool HttpCookieJar::setCookiesFromUrl(const QList<QNetworkCookie> &cookieList, const QUrl &url)
{
    const QMutexLocker lock(&m_mutex);
    return QNetworkCookieJar::setCookiesFromUrl(cookieList, url);
}

bool HttpCookieJar::insertCookie(const QNetworkCookie &cookie)
{
    const QMutexLocker lock(&m_mutex);
    return QNetworkCookieJar::insertCookie(cookie);
}

bool HttpCookieJar::updateCookie(const QNetworkCookie &cookie)
{
    const QMutexLocker lock(&m_mutex);
    return QNetworkCookieJar::updateCookie(cookie);
}

bool HttpCookieJar::deleteCookie(const QNetworkCookie &cookie)
{
    const QMutexLocker lock(&m_mutex);
    return QNetworkCookieJar::deleteCookie(cookie);
}
