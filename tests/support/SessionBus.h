#pragma once

// A session bus of the test's own: the test program starts itself again under dbus-run-session, so nothing it does
// on the bus reaches the user's session. Missing tools fail the test.

#include "support/TestMain.h"

namespace TestSupport {
// In the parent: runs the program again under dbus-run-session and returns its exit code. In the child: -1.
int enterSessionBus(int argc, char **argv);
} // namespace TestSupport

#define VELMORA_SESSION_BUS_TEST_MAIN(TestClass)                                                                       \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        QTemporaryDir sandbox;                                                                                         \
        TestSupport::isolateEnvironment(sandbox.path());                                                               \
        QCoreApplication app(argc, argv);                                                                              \
        if (const int code = TestSupport::enterSessionBus(argc, argv); code >= 0) {                                    \
            return code;                                                                                               \
        }                                                                                                              \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
