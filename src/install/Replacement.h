#pragma once

// Putting a new item where the installed one is, or a package's files into their folders, each one run of
// velmora-place (PlaceTool): as the user where the user may write the folder, else through the installer's
// AuthHelper. Links stay links and are never followed; modes are kept, but not set-id bits nor the write bits of
// others.

#include "install/AuthHelper.h"

#include <QString>

class Replacement
{
public:
    explicit Replacement(AuthHelper &auth);

    // Copies item beside target and swaps it in: the old copy stays until the new one is complete, and nobody sees a
    // part of it. true when the new item is in place.
    bool replace(const QString &item, const QString &target);
    // Copies what each folder holds into its target (made when missing), merged with what is there: folders that
    // exist keep their owner, mode and times, other entries are replaced whole.
    bool merge(const QList<FolderMerge> &merges);

private:
    AuthHelper &m_auth;
};
