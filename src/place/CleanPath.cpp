#include "place/CleanPath.h"

#include <climits>
#include <string_view>

namespace Place {

std::vector<std::string> stepsOf(const std::string &path)
{
    std::vector<std::string> steps;
    for (std::size_t start = 1; start < path.size();) {
        std::size_t end = path.find('/', start);
        end = end == std::string::npos ? path.size() : end;
        steps.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return steps;
}

bool isCleanPath(const std::string &path)
{
    if (path == "/") {
        return true;
    }
    if (path.size() < 2 || path.size() >= PATH_MAX || path.front() != '/' || path.back() == '/' ||
        path.find("//") != std::string::npos) {
        return false;
    }
    for (const std::string &step : stepsOf(path)) {
        if (step == "." || step == "..") {
            return false;
        }
    }
    return true;
}

std::string parentOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? std::string("/") : path.substr(0, slash);
}

std::string nameOf(const std::string &path)
{
    return path.substr(path.rfind('/') + 1);
}

} // namespace Place
