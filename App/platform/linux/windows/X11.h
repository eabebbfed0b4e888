// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

/// Qt's connection to the X server; null on any other display.
xcb_connection_t* x11Connection();

/// The number for a name on this server; waits for it. None if the connection is lost.
xcb_atom_t x11Atom(xcb_connection_t* connection, std::string_view name);

/// The server's first screen, which is the only one that is in use today.
const xcb_screen_t& x11Screen(xcb_connection_t* connection);

struct FreeX11Reply {
    void operator()(void* reply) const { std::free(reply); }
};
/// A reply of the server; null if it has none.
template <typename Reply>
using X11Reply = std::unique_ptr<Reply, FreeX11Reply>;
