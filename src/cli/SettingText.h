#pragma once

// Settings as text on the command line: the type flags of "defaults write" and the old-style property-list
// text that "defaults read" prints.

#include "platform/VLSettings.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace SettingText {

// "-bool", "-int", "-float", "-string", "-array"; nullopt for anything else.
std::optional<SettingType> typeOfFlag(const QString &flag);
QString typeName(SettingType type);
// Whether a value written as given may be stored under a setting of type declared (an integer fits a decimal).
bool fits(SettingType given, SettingType declared);
// The words as a value of type; an invalid QVariant, with problem set, when they are not one.
QVariant parse(SettingType type, const QStringList &words, QString *problem);
QVariant convert(const QVariant &value, SettingType declared);

// A value as "defaults read KEY" prints it: booleans as 1 or 0, lists in parentheses one element a line.
QString value(const QVariant &value, int indent = 0);
// Every key and value between braces, one "key = value;" a line.
QString dictionary(const QList<QPair<QString, QVariant>> &values);

} // namespace SettingText
