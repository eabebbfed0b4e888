# SPDX-License-Identifier: GPL-3.0-or-later
"""What programs tell the window manager and the desktop through the X server."""

import ctypes
import os

PROPERTY_CHANGE_MASK = 1 << 22
CLIENT_MESSAGE = 33
ANY_TYPE = 0
WORDS = 1024
OVERRIDE_REDIRECT = 1 << 9


class ClientMessage(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("serial", ctypes.c_ulong),
        ("send_event", ctypes.c_int),
        ("display", ctypes.c_void_p),
        ("window", ctypes.c_ulong),
        ("message_type", ctypes.c_ulong),
        ("format", ctypes.c_int),
        ("padding", ctypes.c_int),  # in Xlib the data are as aligned as a long
        ("data", ctypes.c_char * 20),
    ]


class WindowAttributes(ctypes.Structure):
    _fields_ = [
        ("background_pixmap", ctypes.c_ulong),
        ("background_pixel", ctypes.c_ulong),
        ("border_pixmap", ctypes.c_ulong),
        ("border_pixel", ctypes.c_ulong),
        ("bit_gravity", ctypes.c_int),
        ("win_gravity", ctypes.c_int),
        ("backing_store", ctypes.c_int),
        ("backing_planes", ctypes.c_ulong),
        ("backing_pixel", ctypes.c_ulong),
        ("save_under", ctypes.c_int),
        ("event_mask", ctypes.c_long),
        ("do_not_propagate_mask", ctypes.c_long),
        ("override_redirect", ctypes.c_int),
        ("colormap", ctypes.c_ulong),
        ("cursor", ctypes.c_ulong),
    ]


class Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("message", ClientMessage), ("padding", ctypes.c_long * 24)]


class XServer:
    """A connection to the X server of a private desktop."""

    def __init__(self, desktop):
        self._library = ctypes.CDLL("libX11.so.6")
        self._library.XOpenDisplay.restype = ctypes.c_void_p
        self._library.XDefaultRootWindow.restype = ctypes.c_ulong
        self._library.XCreateSimpleWindow.restype = ctypes.c_ulong
        self._library.XGetAtomName.restype = ctypes.c_char_p
        before = os.environ.get("XAUTHORITY")
        os.environ["XAUTHORITY"] = desktop.environment["XAUTHORITY"]  # Xlib reads it from nowhere else
        try:
            self._display = ctypes.c_void_p(self._library.XOpenDisplay(desktop.environment["DISPLAY"].encode()))
        finally:
            del os.environ["XAUTHORITY"]
            if before is not None:
                os.environ["XAUTHORITY"] = before
        if not self._display:
            raise AssertionError("the X server lets nobody in")
        self._startups = []
        root = ctypes.c_ulong(self._library.XDefaultRootWindow(self._display))
        self._library.XSelectInput(self._display, root, ctypes.c_long(PROPERTY_CHANGE_MASK))
        self._library.XSync(self._display, 0)

    def cover(self, box, colour):
        """Lays a window of one colour (0xRRGGBB) over this part of the screen, below all windows that come later; until
        the connection is closed."""
        root = ctypes.c_ulong(self._library.XDefaultRootWindow(self._display))
        window = ctypes.c_ulong(
            self._library.XCreateSimpleWindow(self._display, root, *box, 0, ctypes.c_ulong(0), ctypes.c_ulong(colour))
        )
        attributes = WindowAttributes(override_redirect=1)
        self._library.XChangeWindowAttributes(
            self._display, window, ctypes.c_ulong(OVERRIDE_REDIRECT), ctypes.byref(attributes)
        )
        self._library.XMapWindow(self._display, window)
        self._library.XSync(self._display, 0)

    def close(self):
        self._library.XCloseDisplay(self._display)

    def names(self, window, key):
        """The names in a window's property, for example those of its types; none if it does not have it."""
        return [self._name(number) for number in self.numbers(window, key)]

    def numbers(self, window, key):
        """The numbers in a window's property; none if it does not have it."""
        kind, size = ctypes.c_ulong(), ctypes.c_int()
        count, left = ctypes.c_ulong(), ctypes.c_ulong()
        values = ctypes.POINTER(ctypes.c_ulong)()
        self._library.XGetWindowProperty(
            self._display, ctypes.c_ulong(window), self._atom(key), ctypes.c_long(0), ctypes.c_long(WORDS), 0,
            ctypes.c_ulong(ANY_TYPE), ctypes.byref(kind), ctypes.byref(size), ctypes.byref(count), ctypes.byref(left),
            ctypes.byref(values),
        )
        return [values[place] for place in range(count.value)]

    @property
    def ended_startups(self):
        """What programs have told of startups that are over, the last at the end."""
        texts = self._startups
        event = Event()
        while self._library.XPending(self._display):
            self._library.XNextEvent(self._display, ctypes.byref(event))
            if event.type != CLIENT_MESSAGE:
                continue
            kind = self._name(event.message.message_type)
            if kind == "_NET_STARTUP_INFO_BEGIN":
                texts.append("")
            if kind.startswith("_NET_STARTUP_INFO"):
                texts[-1] += event.message.data.decode()
        return texts

    def _atom(self, name):
        return ctypes.c_ulong(self._library.XInternAtom(self._display, name.encode(), 0))

    def _name(self, atom):
        return self._library.XGetAtomName(self._display, ctypes.c_ulong(atom)).decode()
