# SPDX-License-Identifier: GPL-3.0-or-later
"""What a trial has to know of a desktop, and the things that it does there the same way on each."""

from gi.repository import GLib
from support.desktop import SCREEN, START_SECONDS, PrivateDesktop
from support.notifications import NAME as NOTIFICATIONS
from support.notifications import PATH as NOTIFICATIONS_PATH
from support.screen import Box
from support.waiting import wait_until
from support.wlroots import open_shared_memory

TITLE = "Velmora"
STRANGER = "stranger"
DATA_FOLDERS = "/usr/local/share:/usr/share"
RESTART_SECONDS = 60
CLICK_SECONDS = 0.08


class Host:
    """A mixin for a private desktop; the values here are those of a usual panel at the top."""

    packages = ()  # "a|b": the one that this release of Debian has
    version_of = ""  # the package whose version is the desktop's
    dark = True  # the theme that all is tried with
    both_themes = True
    label = False  # whether the panel shows text beside items
    opens = "click"  # what opens the details: "click", "double click" or "menu"
    tooltip = "title and text"  # what of it the panel shows: this, "title", "text or title", or None
    places = True  # whether programs may place their windows
    menu_button = 3  # of the mouse, opens the menu
    menu_lines = 4  # separators are not lines
    button = None  # where the snooze button is, as seen from the notification's lower right corner
    hover = False  # whether it takes a pointer on the notification to see the button
    recolours = False  # whether it draws glyphs in its own colour
    panel = Box(0, 0, SCREEN.width, 28)
    tray = None  # the part of the panel in which only items change; None for all of it
    rest = SCREEN.centre  # for the pointer
    pointer_below = 0  # how much of it is drawn below a panel that it points at
    empty_panel = (SCREEN.width // 2, 14)
    wallpaper = ((100, 700), (100, 420), (1150, 420), (640, 740))
    window = ((300, 300), (460, 420), (220, 240))  # points on the stranger's window

    def ready(self):
        """Whether the panel takes items."""
        try:
            return self._tray_is_ready()
        except GLib.Error:
            return False  # it is just starting or ending

    def kill_panel(self):
        self._panel.kill()
        wait_until(lambda: not self.ready(), START_SECONDS, "the panel's tray is gone")

    def strip(self):
        return self.tray or self.panel

    def beyond(self):
        """All of the screen but the panel."""
        top, height = self.panel.y, self.panel.height + self.pointer_below
        if top > SCREEN.height // 2:
            return Box(0, 0, SCREEN.width, top)
        return Box(0, top + height, SCREEN.width, SCREEN.height - top - height)

    def inside(self):
        """The variables of programs on this desktop that differ from those of the desktop's own parts."""
        return {}

    def details(self):
        return next(iter(self.windows(TITLE)), None)

    def click(self, x, y, button=1):
        """As long as a user's; some panels do not open a menu for a shorter one."""
        self._tool("mousemove", x, y, "mousedown", button, "sleep", CLICK_SECONDS, "mouseup", button, check=True)

    def double_click(self, x, y):
        self._tool("mousemove", x, y, "click", "--repeat", 2, "--delay", 80, 1, check=True)

    def rest_pointer(self):
        self.move_pointer(*self.rest)

    def daemon(self):
        """Name and version of the notification daemon."""
        if self.bus.owner(NOTIFICATIONS) is None:
            raise AssertionError("no notification daemon is running")
        name, _, version, _ = self.bus.call(
            NOTIFICATIONS, NOTIFICATIONS_PATH, NOTIFICATIONS, "GetServerInformation"
        )
        return f"{name} {version}"

    def start_stranger(self):
        """Opens a window of another program, at the left."""
        command = ["xterm", "-T", STRANGER, "-geometry", "80x24+120+160"]
        self.stranger = self.start(STRANGER, command, self.environment)
        wait_until(lambda: self.windows(STRANGER), START_SECONDS, lambda: f"a window; {self.stranger.errors}")

    def close_settings(self):
        self.press("Escape")

    def await_name(self, name):
        wait_until(lambda: self.bus.owner(name), RESTART_SECONDS, f"{name} is on the session bus")


class X11Host(Host, PrivateDesktop):
    """A desktop on an X server. `prepare` writes its configuration, `begin` starts all of it but the panel, and
    `run_panel` the panel."""

    services = ()
    variables = {}
    settings = ""  # for GSettings

    def __init__(self, dark):
        open_shared_memory()
        common = {"XDG_DATA_DIRS": DATA_FOLDERS, "LIBGL_ALWAYS_SOFTWARE": "1", "GSETTINGS_BACKEND": "keyfile"}
        super().__init__(
            panel=False,
            window_manager=False,
            ordinary_user=True,
            xfce_settings=False,
            services=self.services,
            variables=common | self.variables,
        )
        self.dark = dark
        try:
            folder = self.config / "glib-2.0/settings"
            folder.mkdir(parents=True)
            (folder / "keyfile").write_text(self.gsettings(), encoding="utf-8")
            self.prepare()
            self.begin()
            self.start_panel()
        except BaseException:
            self.stop()
            raise

    def gsettings(self):
        return self.settings

    def prepare(self):
        pass

    def begin(self):
        pass

    def run_panel(self):
        raise NotImplementedError

    def start_panel(self):
        self._panel = self.run_panel()
        wait_until(self.ready, RESTART_SECONDS, lambda: f"the panel's tray is ready; {self._panel.errors[-2000:]}")

    def await_window_manager(self):
        managed = lambda: self._tool("get_num_desktops").returncode == 0
        wait_until(managed, START_SECONDS, "the window manager is ready")
