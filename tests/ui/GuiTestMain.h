#pragma once

// VELMORA_TEST_MAIN for widget tests: the same sandboxed HOME and XDG folders, with a QApplication.

#include "support/TestMain.h"

#include <QApplication>

#define VELMORA_GUI_TEST_MAIN(TestClass)                                                                               \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        QTemporaryDir sandbox;                                                                                         \
        TestSupport::isolateEnvironment(sandbox.path());                                                               \
        QApplication app(argc, argv);                                                                                  \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
