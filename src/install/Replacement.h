#pragma once

// Putting a new item where the installed one is. The installed copy is renamed aside in its own folder until the new
// one is complete, put back when anything fails, and removed only after success. Items are copied with cp -a: links
// stay links and are never followed, modes are kept. Where our user cannot write the folder, the steps go through
// the installer's AuthHelper.

#include <QString>

class AuthHelper;

class Replacement
{
public:
    explicit Replacement(AuthHelper &auth);

    // Copies item to target, replacing what is there; true when the new item is in place.
    bool replace(const QString &item, const QString &target);
    // Copies what folder holds into target (made when missing), merged with what target holds already; target
    // itself is left as it is.
    bool merge(const QString &folder, const QString &target);

private:
    bool copy(const QString &source, const QString &destination, bool privileged);
    bool move(const QString &source, const QString &destination, bool privileged);
    bool remove(const QString &path, bool privileged);
    // Whether writing into folder needs administrator rights; makes folder when missing and possible.
    bool needsRights(const QString &folder);

    AuthHelper &m_auth;
};
