#include "place/Caller.h"

#include <cstdlib>
#include <fstream>
#include <string>

#include <grp.h>
#include <pwd.h>
#include <sys/fsuid.h>
#include <unistd.h>

namespace Place {

namespace {

// A user id from an environment variable; root when it is absent or not a number.
uid_t fromEnvironment(const char *name)
{
    const char *text = std::getenv(name);
    if (!text || !*text) {
        return 0;
    }
    char *end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 10);
    return *end == '\0' ? static_cast<uid_t>(value) : 0;
}

// The real user id of the process that started us.
uid_t parentOwner()
{
    std::ifstream status("/proc/" + std::to_string(getppid()) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("Uid:", 0) == 0) {
            return static_cast<uid_t>(std::strtoul(line.c_str() + 4, nullptr, 10));
        }
    }
    return 0;
}

} // namespace

Caller Caller::find()
{
    Caller caller;
    if (geteuid() != 0) {
        caller.uid = getuid();
        caller.gid = getgid();
        return caller;
    }
    for (const uid_t uid : {fromEnvironment("PKEXEC_UID"), fromEnvironment("SUDO_UID"), parentOwner()}) {
        if (uid != 0) {
            caller.uid = uid;
            caller.confined = true;
            break;
        }
    }
    if (!caller.confined) {
        return caller;
    }
    // A user without an entry keeps no group but a group of its own number, which grants nothing.
    caller.gid = static_cast<gid_t>(caller.uid);
    if (const passwd *entry = getpwuid(caller.uid)) {
        caller.gid = entry->pw_gid;
        int count = 64;
        caller.groups.resize(count);
        if (getgrouplist(entry->pw_name, caller.gid, caller.groups.data(), &count) < 0) {
            caller.groups.resize(count);
            getgrouplist(entry->pw_name, caller.gid, caller.groups.data(), &count);
        }
        caller.groups.resize(count);
    }
    if (caller.groups.empty()) {
        caller.groups.push_back(caller.gid);
    }
    return caller;
}

bool Caller::adoptGroups() const
{
    return !confined || setgroups(groups.size(), groups.data()) == 0;
}

AsCaller::AsCaller(const Caller &caller) : m_switched(caller.confined)
{
    if (m_switched) {
        setfsgid(caller.gid);
        setfsuid(caller.uid);
    }
}

AsCaller::~AsCaller()
{
    if (m_switched) {
        setfsuid(0);
        setfsgid(0);
    }
}

} // namespace Place
