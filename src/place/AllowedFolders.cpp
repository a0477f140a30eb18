#include "place/AllowedFolders.h"

#include "place/CleanPath.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Place {

namespace {

bool isRootsAlone(const struct stat &info)
{
    return info.st_uid == 0 && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::vector<std::string> refuseAll(const std::string &path, const std::string &why)
{
    std::cerr << "velmora-place: " << path << ' ' << why << ": nothing may be written for another user\n";
    return {};
}

std::string trimmed(const std::string &line)
{
    const std::size_t first = line.find_first_not_of(" \t\r");
    const std::size_t last = line.find_last_not_of(" \t\r");
    return first == std::string::npos ? std::string() : line.substr(first, last - first + 1);
}

} // namespace

const std::vector<std::string> &defaultApplicationFolders()
{
    static const std::vector<std::string> folders = {"/Applications", "/Developer/Applications"};
    return folders;
}

std::vector<std::string> readAllowedFolders(const std::string &path)
{
    struct stat folder = {};
    if (lstat(parentOf(path).c_str(), &folder) != 0 && errno == ENOENT) {
        return defaultApplicationFolders();
    }
    const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        return errno == ENOENT ? defaultApplicationFolders() : refuseAll(path, std::strerror(errno));
    }
    struct stat file = {};
    std::string text;
    if (fstat(fd, &file) == 0 && S_ISREG(file.st_mode) && file.st_size < 65536) {
        text.resize(static_cast<std::size_t>(file.st_size));
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(fd, text.data(), text.size()))));
    }
    close(fd);
    if (!S_ISDIR(folder.st_mode) || !isRootsAlone(folder) || !S_ISREG(file.st_mode) || !isRootsAlone(file)) {
        return refuseAll(path, "is not root's alone");
    }
    std::vector<std::string> folders;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::string entry = trimmed(line.substr(0, line.find('#')));
        if (entry.empty()) {
            continue;
        }
        if (isCleanPath(entry) && entry != "/") {
            folders.push_back(entry);
        } else {
            std::cerr << "velmora-place: " << path << ": ignored " << entry << '\n';
        }
    }
    return folders;
}

bool isInside(const std::string &path, const std::vector<std::string> &folders, bool equalIsInside)
{
    for (const std::string &folder : folders) {
        if ((equalIsInside && path == folder) ||
            (path.size() > folder.size() + 1 && path.compare(0, folder.size(), folder) == 0 &&
             path[folder.size()] == '/')) {
            return true;
        }
    }
    return false;
}

} // namespace Place
