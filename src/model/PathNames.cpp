#include "model/PathNames.h"

#include "model/RecordText.h"

namespace {
// The end of the last path component: trailing slashes are not part of it.
qsizetype componentEnd(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == QLatin1Char('/')) {
        --end;
    }
    return end;
}

// Index of the "." that starts the extension, or -1.
qsizetype extensionDot(const QString &path)
{
    const qsizetype end = componentEnd(path);
    const qsizetype componentStart = path.lastIndexOf(QLatin1Char('/'), end - 1) + 1;
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'), end - 1);
    if (dot <= componentStart || dot >= end - 1) {
        return -1;
    }
    return dot;
}
} // namespace

QString pathExtension(const QString &path)
{
    const qsizetype dot = extensionDot(path);
    return dot < 0 ? RecordText::empty : path.mid(dot + 1, componentEnd(path) - dot - 1);
}

QString stringByDeletingPathExtension(const QString &path)
{
    if (path.isNull()) {
        return path;
    }
    const qsizetype dot = extensionDot(path);
    return dot < 0 ? path.left(componentEnd(path)) : path.left(dot);
}
