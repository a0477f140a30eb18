#pragma once

// Copying, swapping in, merging and removing trees through folder handles: every step is opened from the handle of
// the folder above it without following links, so a folder swapped for a link meanwhile stops the walk instead of
// steering it. What is copied is read with the caller's rights; as root, a folder written into must be root's alone.

#include "place/Caller.h"
#include "place/Fd.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace Place {

class Tree
{
public:
    explicit Tree(const Caller &caller) : m_caller(caller) {}

    // The folder at a clean path, made when missing and make is set: as root, walked step by step from "/" and
    // refused when a step is not root's alone; as the user, opened by its path (the user's own business).
    Fd openFolder(const std::string &path, bool make) const;
    // The folder holding a source, opened with the caller's rights.
    Fd openSourceFolder(const std::string &path) const;

    // Copies source (in sourceFolder) to a hidden name in folder, then swaps it in for name: the old item stays until
    // the new one is whole, and nothing is written through a link that stood at name.
    bool place(int sourceFolder, const std::string &source, int folder, const std::string &name,
               const std::string &shownAs);
    // Enters folders that both sides have (a bundle, a folder ending ".app", is placed whole instead) and places every
    // other entry. With check set, only finds what would be refused, touching nothing.
    bool merge(int sourceFolder, int folder, const std::string &shownAs, bool check, int depth = 0);
    // Removes name from folder, never following a link.
    bool remove(int folder, const std::string &name, const std::string &shownAs, int depth = 0) const;

private:
    bool copy(int sourceFolder, const std::string &source, int folder, const std::string &name, int depth);
    bool copyFolder(int sourceFolder, const std::string &source, int folder, const std::string &name, int depth);
    bool copyFile(int sourceFolder, const std::string &source, const struct stat &info, int folder,
                  const std::string &name);
    Fd enter(int folder, const std::string &name, const std::string &shownAs, bool make) const;
    Fd enterSource(int folder, const std::string &name) const;

    const Caller &m_caller;
    // Files with more than one name: the first copy's path under m_copyRoot, so the others become links to it.
    std::map<std::pair<dev_t, ino_t>, std::string> m_copied;
    int m_copyRoot = -1;
    std::string m_copyPath;
};

// A hidden name beside name, so that a scan running meanwhile does not list it as an app of its own.
std::string hiddenName(const std::string &name, const char *purpose);
bool fail(const std::string &what);
std::vector<std::string> listFolder(int folder, const std::string &shownAs, bool &ok);

} // namespace Place
