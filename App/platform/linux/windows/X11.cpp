// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/X11.h"

#include <QGuiApplication>

xcb_connection_t* x11Connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

xcb_atom_t x11Atom(xcb_connection_t* connection, std::string_view name) {
    const auto question = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, question, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

const xcb_screen_t& x11Screen(xcb_connection_t* connection) {
    return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}
