#pragma once

// Whom velmora-place works for. Root started by pkexec or sudo for another user works for that user: it reads what it
// copies with that user's rights (so no root-only file can be taken along) and writes only into the application
// folders. Root started by root, or the user running it directly, has no one to guard against.

#include <sys/types.h>

#include <utility>
#include <vector>

namespace Place {

struct Caller
{
    uid_t uid = 0;
    gid_t gid = 0;
    std::vector<gid_t> groups;
    bool confined = false; // root working for a user who is not root

    // From pkexec's PKEXEC_UID, sudo's SUDO_UID or the parent process's owner: any one that is not root confines.
    static Caller find();
    // Makes this process's supplementary groups the caller's, so that reading as the caller sees what they see.
    bool adoptGroups() const;
};

// While one lives, file access is checked as the caller (root's file rights come back at its end).
class AsCaller
{
public:
    explicit AsCaller(const Caller &caller);
    ~AsCaller();
    AsCaller(const AsCaller &) = delete;
    AsCaller &operator=(const AsCaller &) = delete;

private:
    bool m_switched;
};

} // namespace Place
