#pragma once

// The rules that decide which versions are newer. Pure functions: they read no record and no setting.
// A null QString is an absent version.

#include <QString>

enum VersionOrder : unsigned {
    VersionDescending = 0, // the first version is newer
    VersionAscending = 1,  // the first version is older: the second is an update
    VersionSame = 2,
    VersionNotComparable = 3 // only from a broken ordering; never produced by ours
};

// Finds the version inside a text such as "Version 2.1.3 (Build 455)" -> "2.1.3". Absent input gives "-".
QString cleanVersionString(const QString &version);
// Case-insensitive order with digit runs compared by numeric value (any length; "01" equals "1").
VersionOrder orderCompareString(const QString &a, const QString &b);
VersionOrder compareVersionString(const QString &a, const QString &b);
// True when the installed version local is older than the catalogue version remote. An absent local is never outdated.
bool isLocalVersionOutdatedByRemoteVersion(const QString &local, const QString &remote);
// The OS version number inside a text: from its first digit to the first white space. Absent, or no digit, gives "".
QString cleanOSVersion(const QString &text);
