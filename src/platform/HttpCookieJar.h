#pragma once

// The cookies of the whole process: every thread's HttpSession stores into and reads from this one jar, so a
// log-in made on one worker holds for the requests of another. Its contents can be read and replaced whole,
// for the account code to keep them across runs. Safe to use from any thread.

#include <QList>
#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QRecursiveMutex>

class HttpCookieJar : public QNetworkCookieJar
{
public:
    static HttpCookieJar &shared();

    QList<QNetworkCookie> cookies() const;
    void setCookies(const QList<QNetworkCookie> &cookies);

    QList<QNetworkCookie> cookiesForUrl(const QUrl &url) const override;
    bool setCookiesFromUrl(const QList<QNetworkCookie> &cookieList, const QUrl &url) override;
    bool insertCookie(const QNetworkCookie &cookie) override;
    bool updateCookie(const QNetworkCookie &cookie) override;
    bool deleteCookie(const QNetworkCookie &cookie) override;

private:
    HttpCookieJar() = default;

    // Recursive: the base class's setCookiesFromUrl calls insertCookie, which locks again.
    mutable QRecursiveMutex m_mutex;
};
