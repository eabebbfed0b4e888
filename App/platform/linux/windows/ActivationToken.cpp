// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/ActivationToken.h"

#include "platform/linux/windows/X11.h"

#include <QGuiApplication>
#include <QString>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace {

constexpr qsizetype mostBytes = 4096;

/// As the Startup Notification Protocol of freedesktop.org wants it: a text to everybody, in pieces of 20 bytes, the
/// last of which ends with a zero.
void endStartup(xcb_connection_t* connection, const QByteArray& token) {
    QByteArray quoted;
    for (const char one : token) {
        if (one == '"' || one == '\\')
            quoted += '\\';
        quoted += one;
    }
    const QByteArray text = "remove: ID=\"" + quoted + '"' + '\0';
    const xcb_window_t root = x11Screen(connection).root;
    // The pieces belong together by the window that they are about.
    const xcb_window_t sender = xcb_generate_id(connection);
    xcb_create_window(connection, 0, sender, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      0, nullptr);
    xcb_client_message_event_t piece{};
    piece.response_type = XCB_CLIENT_MESSAGE;
    piece.format = 8;
    piece.window = sender;
    piece.type = x11Atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t next = x11Atom(connection, "_NET_STARTUP_INFO");
    constexpr qsizetype size = sizeof piece.data.data8;
    for (qsizetype begin = 0; begin < text.size(); begin += size) {
        const qsizetype end = std::min(begin + size, text.size());
        std::fill(std::begin(piece.data.data8), std::end(piece.data.data8), 0);
        std::copy(text.begin() + begin, text.begin() + end, piece.data.data8);
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char*>(&piece));
        piece.type = next;
    }
    xcb_destroy_window(connection, sender);
    xcb_flush(connection);
}

void leaveInEnvironment(const QByteArray& token) {
    constexpr QByteArrayView name = "XDG_ACTIVATION_TOKEN=";
    const QByteArray setting = name.toByteArray() + token;
    // setenv() keeps every value for good, and anybody on the bus may send any number of them. So the environment gets
    // a text that is written over, and that outlives everything.
    static std::array<char, name.size() + mostBytes + 1> variable;
    std::copy_n(setting.constData(), setting.size() + 1, variable.begin()); // with the zero at the end
    ::putenv(variable.data());
}

} // namespace

void takeActivationToken(const QString& token) {
    const QByteArray bytes = token.toUtf8();
    if (bytes.size() > mostBytes)
        return;
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        leaveInEnvironment(bytes);
        return;
    }
    // Of many that come together only the last is given back: anybody on the bus may send them, and each costs time.
    constexpr std::chrono::milliseconds together(100);
    static QByteArray last;
    if (std::exchange(last, bytes).isEmpty())
        QTimer::singleShot(together, qGuiApp, [connection] { endStartup(connection, std::exchange(last, {})); });
}
