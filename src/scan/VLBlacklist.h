#pragma once

// Which scanned bundles are never reported: the built-in names, the names the service adds, and the rules
// of appIsOnBlackList for installers, firmware updaters, widgets, developer plug-ins and virtual-machine apps.

#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <future>
#include <memory>
#include <optional>

class BundleReader;

class VLBlacklist
{
public:
    // The built-in names, in their order.
    static const QStringList &builtInList();
    // The widgets that come with the system; any other widget is reported whatever its name.
    static const QStringList &builtInWidgets();

    // The service's list: its text split at "\n", empty pieces left out, duplicates and carriage returns kept.
    static QStringList splitServerList(const QString &text);
    // GET baseUrl + "/vld6blacklist", blocking; nullopt when nothing could be read. Gives up soon after cancel turns
    // true.
    static std::optional<QString> fetchServerText(const QString &baseUrl, const std::atomic<bool> *cancel = nullptr);
    // The same on a thread of its own, split into names (none when nothing could be read): whoever needs the names
    // waits for them, and nobody else does. The last holder of the future waits for the thread, so set cancel first
    // when the names are no longer wanted.
    static std::shared_future<QStringList> fetchServerList(const QString &baseUrl,
                                                           std::shared_ptr<const std::atomic<bool>> cancel);

    VLBlacklist();
    explicit VLBlacklist(const QStringList &names);

    const QStringList &names() const { return m_names; }
    void append(const QStringList &names);

    // fsName: the bundle's file name ("Foo Setup.app"); path: where it lies.
    bool appIsOnBlackList(const QString &fsName, const QString &path) const;
    // The same, reading the bundle through a reader that the record made next can share.
    bool appIsOnBlackList(const QString &fsName, BundleReader &bundle) const;

private:
    QStringList m_names;
    QSet<QString> m_lookup;
};
