#pragma once

// Request paths of the form /prefix/key/value/key/value..., split on the raw request target so that an
// encoded "/" inside a value stays inside it.

#include <QHash>
#include <QStringList>

#include <optional>

namespace PathSegments {

// The decoded segments of the target's path (query left out), empty segments kept; nullopt on a bad escape.
std::optional<QStringList> split(const std::string &target);

// Pairs from segments[from] on. The value of restKey takes every remaining segment, joined with "/" again
// (a base64 text may hold "/"). Nullopt when a key has no value.
std::optional<QHash<QString, QString>> pairs(const QStringList &segments, qsizetype from, const QString &restKey = {});

} // namespace PathSegments
