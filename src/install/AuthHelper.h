#pragma once

// Fixed operations that may need administrator rights, each run as an argument vector: directly when the process
// is root, otherwise through the command in the setting "escalationCommand" (pkexec by default). One helper
// belongs to one installer; the user is asked for a password at most once per helper.

#include <QString>

class AuthHelper
{
public:
    AuthHelper();

    // Copies source to destination (links kept as links, modes kept); true when the copy completed.
    bool copyPathWithForcedAuthentication(const QString &source, const QString &destination);
    bool removePathWithForcedAuthentication(const QString &path);
};
