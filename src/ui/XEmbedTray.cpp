#include "ui/XEmbedTray.h"

#include <QByteArray>
#include <QGuiApplication>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace {

template <typename Reply> using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

// The screen DISPLAY names, as Qt's own connection took it.
int displayScreen()
{
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (!xcb_parse_display(nullptr, &host, &display, &screen)) {
        screen = 0;
    }
    std::free(host);
    return screen;
}

} // namespace

namespace XEmbedTray {

bool isRunning()
{
    const auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11) {
        return false;
    }
    xcb_connection_t *connection = x11->connection();
    const QByteArray name = "_NET_SYSTEM_TRAY_S" + QByteArray::number(displayScreen());
    const ReplyPtr<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 1, name.size(), name.constData()), nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE) {
        return false;
    }
    const ReplyPtr<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
        &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace XEmbedTray
