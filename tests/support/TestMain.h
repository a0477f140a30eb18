#pragma once

// Runs a Qt Test class with HOME, the XDG folders and TMPDIR inside a fresh temporary folder, so a test
// never reads or writes the user's own files and tests can run side by side.

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>

namespace TestSupport {
// Points HOME, XDG_CONFIG_HOME, XDG_DATA_HOME, XDG_CACHE_HOME and TMPDIR into root (created as needed).
void isolateEnvironment(const QString &root);
} // namespace TestSupport

#define VELMORA_TEST_MAIN(TestClass)                                                                                   \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        QTemporaryDir sandbox;                                                                                         \
        TestSupport::isolateEnvironment(sandbox.path());                                                               \
        QCoreApplication app(argc, argv);                                                                              \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
