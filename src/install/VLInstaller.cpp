#include "install/VLInstaller.h"

// Interface only for now: every operation fails until the unpacking and placing code arrives.

VLInstaller::VLInstaller() = default;

void VLInstaller::setSenderApp(VLApp *app)
{
    m_senderApp = app;
}

VLApp *VLInstaller::senderApp() const
{
    return m_senderApp;
}

void VLInstaller::setRunningAppGate(RunningAppGate *gate)
{
    m_gate = gate;
}

QString VLInstaller::extractZIP(const QString &)
{
    return {};
}

QString VLInstaller::extractTGZ(const QString &)
{
    return {};
}

QString VLInstaller::extractTBZ(const QString &)
{
    return {};
}

QString VLInstaller::extractBZ2(const QString &)
{
    return {};
}

QString VLInstaller::mountDMG(const QString &)
{
    return {};
}

void VLInstaller::unmount(const QString &, const QString &) {}

QString VLInstaller::findTarFile(const QString &)
{
    return {};
}

void VLInstaller::cleanUp(const QString &) {}

QString VLInstaller::installNewVersionFrom(const QString &, const QString &)
{
    return {};
}

QStringList VLInstaller::installCandidates(const QString &)
{
    return {};
}

QString VLInstaller::findBestMatchFromCandidates(const QStringList &, const QString &)
{
    return {};
}

QString VLInstaller::handleBestMatch(const QString &, const QString &)
{
    return {};
}

QString VLInstaller::installNewVersionFromPKG(const QString &, const QString &)
{
    return {};
}

QString VLInstaller::mountDMGandInstall(const QString &, const QString &)
{
    return {};
}

bool VLInstaller::checkIfAppIsRunningAndInstall(const QString &, const QString &)
{
    return false;
}
