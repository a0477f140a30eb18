#pragma once

// Reads an import file: a JSON array of catalogue records, or an object {"apps": [...], "blacklist": [...],
// "bundles": {"ID": ["catalogue id", ...]}}. Records in the real-world shape (they carry "token") are mapped
// to our own fields first.

#include "storage/Storage.h"

#include <optional>

namespace CatalogueFile {

std::optional<CatalogueImport> parse(const QByteArray &json, QString *error);
std::optional<CatalogueImport> read(const QString &path, QString *error);
// Reads the file and writes it in one transaction; the summary's error says why nothing was written.
ImportSummary importFile(CatalogueStore &store, const QString &path);

// One record of our own shape; the key and id it is imported under. Exposed for the tests.
std::optional<ImportApp> readRecord(const QJsonObject &object, QString *error);

} // namespace CatalogueFile
