#pragma once

// File-name pieces as the record uses them: "Foo 1.2.app" has the extension "app" and the bare name "Foo 1.2".

#include <QString>

// The text after the last "." of the last path component; "" when there is none (".hidden" has none).
QString pathExtension(const QString &path);
// The path without the "." and extension of its last component.
QString stringByDeletingPathExtension(const QString &path);
