#pragma once

// Runs the built velmora-cli as a user would, with this test's isolated HOME, XDG folders and TMPDIR.

#include <QByteArray>
#include <QProcessEnvironment>
#include <QStringList>

struct CliResult
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

CliResult runCli(const QStringList &arguments,
                 const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
