#pragma once

// Runs a Qt Test class inside a session bus of its own with an unlocked Secret Service, as the keychain code needs:
// the test program starts itself again under dbus-run-session, isolates HOME and the XDG folders, and starts
// gnome-keyring-daemon unlocked with a throw-away password before the tests. Missing tools fail the test.

#include "support/TestMain.h"

namespace TestSupport {
// In the parent: runs the program again under dbus-run-session and returns its exit code. In the child: starts the
// keyring and returns -1 when it runs, else an exit code.
int enterKeyringSession(int argc, char **argv);
} // namespace TestSupport

#define VELMORA_KEYRING_TEST_MAIN(TestClass)                                                                           \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        QTemporaryDir sandbox;                                                                                         \
        TestSupport::isolateEnvironment(sandbox.path());                                                               \
        QCoreApplication app(argc, argv);                                                                              \
        if (const int code = TestSupport::enterKeyringSession(argc, argv); code >= 0) {                                \
            return code;                                                                                               \
        }                                                                                                              \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
