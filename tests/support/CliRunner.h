#pragma once

// Runs the built velmora-cli as a user would, with this test's isolated HOME, XDG folders and TMPDIR.

#include <QByteArray>
#include <QProcessEnvironment>
#include <QStringList>

#include <functional>

struct CliResult
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

CliResult runCli(const QStringList &arguments,
                 const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
// The same with input on stdin. beforeInput runs while velmora-cli waits for it (to look at the running process).
CliResult runCli(const QStringList &arguments, const QByteArray &input, const std::function<void()> &beforeInput = {},
                 const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
