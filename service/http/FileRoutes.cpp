// Update files under "/files/", with Range support so an interrupted download resumes.

#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/PathSegments.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

namespace {

const char *mimeType(const QString &name)
{
    static const std::pair<const char *, const char *> types[] = {
        {".zip", "application/zip"},     {".tar.gz", "application/gzip"},
        {".tgz", "application/gzip"},    {".tar.bz2", "application/x-bzip2"},
        {".tbz", "application/x-bzip2"}, {".dmg", "application/x-apple-diskimage"},
        {".pkg", "application/x-xar"},   {".html", "text/html; charset=utf-8"},
        {".png", "image/png"},           {".txt", "text/plain; charset=utf-8"},
    };
    for (const auto &[suffix, type] : types) {
        if (name.endsWith(QLatin1StringView(suffix), Qt::CaseInsensitive))
            return type;
    }
    return "application/octet-stream";
}

enum class Lookup { Found, Missing, Refused };

// The file for a request; refused when the path would leave the files folder (a "..", a link pointing out).
std::pair<Lookup, QString> resolve(const QString &filesDir, const std::string &target)
{
    const auto segments = PathSegments::split(target);
    if (!segments || segments->size() < 2)
        return {Lookup::Refused, {}};
    const QStringList parts = segments->mid(1);
    for (const QString &part : parts) {
        if (part.isEmpty() || part == u'.' || part == QLatin1StringView("..") || part.contains(QChar(0)))
            return {Lookup::Refused, {}};
    }
    const QString root = QFileInfo(filesDir).canonicalFilePath();
    const QString path = QFileInfo(QDir(filesDir).filePath(parts.join(u'/'))).canonicalFilePath();
    if (root.isEmpty() || path.isEmpty() || !QFileInfo(path).isFile())
        return {Lookup::Missing, {}};
    if (!path.startsWith(root + u'/'))
        return {Lookup::Refused, {}};
    return {Lookup::Found, path};
}

void serveFile(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto [lookup, path] = resolve(context.filesDir, req.target);
    if (lookup == Lookup::Refused)
        return Reply::fail(res, 400, QStringLiteral("path outside the files folder"));
    auto file = std::make_shared<QFile>(path);
    if (lookup == Lookup::Missing || !file->open(QIODevice::ReadOnly))
        return Reply::fail(res, 404, QStringLiteral("no such file"));
    const size_t size = size_t(file->size());
    // A range that starts past the end, or a suffix of no bytes ("bytes=-0"), selects nothing.
    const bool selectsNothing = std::any_of(req.ranges.begin(), req.ranges.end(), [size](const httplib::Range &range) {
        return range.first >= 0 ? size_t(range.first) >= size : range.second == 0;
    });
    if (selectsNothing) {
        res.set_header("Content-Range", "bytes */" + std::to_string(size));
        return Reply::fail(res, 416, QStringLiteral("range selects no byte of the file"));
    }
    // The status stays unset so that the server answers 206 with Content-Range for a Range request.
    res.set_content_provider(size, mimeType(path), [file](size_t offset, size_t length, httplib::DataSink &sink) {
        QByteArray chunk(qsizetype(std::min<size_t>(length, 64 * 1024)), Qt::Uninitialized);
        if (!file->seek(qint64(offset)))
            return false;
        const qint64 read = file->read(chunk.data(), chunk.size());
        return read > 0 && sink.write(chunk.constData(), size_t(read));
    });
}

} // namespace

void registerFileRoutes(httplib::Server &server, ServiceContext &context)
{
    server.Get(R"(/files/.*)", withContext(context, serveFile));
}
