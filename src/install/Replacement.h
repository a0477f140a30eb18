#pragma once

// Putting a new item where the installed one is, or a package's files into their folder, each one run of
// velmora-place (PlaceTool): as the user where the user may write and owns what is replaced, else through the
// installer's AuthHelper. Links stay links and are never followed, modes are kept.

#include <QString>

class AuthHelper;

class Replacement
{
public:
    explicit Replacement(AuthHelper &auth);

    // Copies item to target, replacing what is there; the old copy is kept aside until the new item is in place and
    // put back when anything fails. true when the new item is in place.
    bool replace(const QString &item, const QString &target);
    // Copies what folder holds into target (made when missing), merged with what target holds already; target
    // itself is left as it is.
    bool merge(const QString &folder, const QString &target);

private:
    AuthHelper &m_auth;
};
