#include "platform/TerminalInput.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

std::optional<QString> lineFromStdin()
{
    std::string line;
    if (!std::getline(std::cin, line) && line.empty()) {
        return std::nullopt;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return QString::fromStdString(line);
}

} // namespace

namespace TerminalInput {

bool isTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

std::optional<QString> askLine(const QString &prompt, bool echo)
{
    if (!isTerminal()) {
        return std::nullopt;
    }
    std::fputs(prompt.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
    termios saved = {};
    const bool quiet = !echo && tcgetattr(STDIN_FILENO, &saved) == 0;
    if (quiet) {
        termios silent = saved;
        silent.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    const std::optional<QString> line = lineFromStdin();
    if (quiet) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        std::fputc('\n', stderr);
    }
    return line;
}

std::optional<QString> readStdinLine()
{
    const std::optional<QString> line = lineFromStdin();
    if (!line || line->isEmpty()) {
        return std::nullopt;
    }
    return line;
}

} // namespace TerminalInput
