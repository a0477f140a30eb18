#pragma once

// What happens around replacing an installed copy: a running copy must be quit before its files change, and is
// started again afterwards. The installer asks the gate it was given; without one it replaces the copy as it is.

#include <QString>

class RunningAppGate
{
public:
    virtual ~RunningAppGate() = default;

    // Before the copy at target is replaced. false: leave it alone and skip the installation.
    virtual bool prepareToReplace(const QString &target) = 0;
    // After the replacement ended; placed tells whether the new copy is at target (else the old one is back).
    virtual void finishedReplacing(const QString &target, bool placed) = 0;
};
