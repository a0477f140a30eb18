#include "install/DownloadBounds.h"

#include "platform/HttpDownload.h"
#include "platform/VLSettings.h"

namespace DownloadBounds {

namespace {

constexpr qint64 kMegabyte = qint64(1) << 20;
constexpr qint64 kMarginBytes = 2 * kMegabyte;
constexpr int kNoProgressMs = 60 * 1000;
constexpr qint64 kLeastBytesPerSecond = 1024;
constexpr int kRateWindowMs = 5 * 60 * 1000;

} // namespace

qint64 maxBytes(const QString &catalogueKilobytes)
{
    bool known = false;
    const double kilobytes = catalogueKilobytes.trimmed().toDouble(&known);
    if (known && kilobytes > 0) {
        const qint64 bytes = qint64(kilobytes * 1024.0);
        return bytes + bytes / 10 + kMarginBytes;
    }
    return std::max<qint64>(1, VLSettings().value(QString::fromLatin1(SettingKey::downloadLimitMB)).toLongLong()) *
           kMegabyte;
}

void apply(DownloadRequest &request, const QString &catalogueKilobytes)
{
    request.maxBytes = maxBytes(catalogueKilobytes);
    request.timeoutMs = kNoProgressMs;
    request.minBytesPerSecond = kLeastBytesPerSecond;
    request.rateWindowMs = kRateWindowMs;
}

} // namespace DownloadBounds
