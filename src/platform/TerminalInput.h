#pragma once

// Reading what the user types: one line from the terminal, with or without echo, or a line from standard input
// when a program pipes it in (so a password never has to stand on a command line).

#include <QString>

#include <optional>

namespace TerminalInput {
// Whether standard input is a terminal.
bool isTerminal();
// prompt goes to stderr; nullopt when standard input is no terminal or ended.
std::optional<QString> askLine(const QString &prompt, bool echo);
// The first line of standard input without its line break; nullopt when it is empty.
std::optional<QString> readStdinLine();
} // namespace TerminalInput
