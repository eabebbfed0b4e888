# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktops that run on an X server."""

import shutil
from pathlib import Path

from support.desktop import SCREEN
from support.notifications import NAME as NOTIFICATIONS
from support.notifications import Dunst, Mate, Xfce
from support.screen import Box

from .host import X11Host

LXQT_PANEL = """[General]
__userfile__=true
panels=panel1

[panel1]
plugins=spacer,statusnotifier
position=Bottom
panelSize=32
iconSize=22
width=100
width-percent=true

[spacer]
type=spacer
expand=true

[statusnotifier]
type=statusnotifier
alignment=Right
"""

TINT2 = """rounded = 0
background_color = {colour} 100
panel_items = FS
panel_position = top center horizontal
panel_size = 100% 28
panel_background_id = 1
systray_icon_size = 24
"""


BUDGIE_PANEL = """[com/solus-project/budgie-panel]
panels=['00000000-0000-0000-0000-000000000001']
migration-level=1

[com/solus-project/budgie-panel/panels/{{00000000-0000-0000-0000-000000000001}}]
size=36
location='bottom'
transparency='none'
applets=['00000000-0000-0000-0000-000000000002', '00000000-0000-0000-0000-000000000003']

[com/solus-project/budgie-panel/applets/{{00000000-0000-0000-0000-000000000002}}]
name='Icon Task List'
alignment='start'
position=0

[com/solus-project/budgie-panel/applets/{{00000000-0000-0000-0000-000000000003}}]
name='{applet}'
alignment='end'
position=0
"""


class XfceHost(X11Host):
    packages = ("xfce4-panel", "xfconf", "xfwm4", "xfce4-notifyd", "xfdesktop4", "adwaita-icon-theme")
    version_of = "xfce4-panel"
    recolours = True
    button = (-74, -29)

    def prepare(self):
        self._write_panel_configuration(self.dark)

    def begin(self):
        self._start_settings()
        self.start("xfwm4", ["xfwm4", "--compositor=off"])
        self.await_window_manager()
        self.start("xfdesktop", ["xfdesktop", "--disable-wm-check"])
        Xfce(self).start()

    def run_panel(self):
        return self.start("xfce4-panel", ["xfce4-panel", "--disable-wm-check"])


class MateHost(X11Host):
    packages = (
        "mate-panel",
        "marco",
        "caja",
        "mate-notification-daemon",
        "mate-settings-daemon",
        "mate-themes",
        "adwaita-icon-theme",
    )
    version_of = "mate-panel"
    variables = {"XDG_CURRENT_DESKTOP": "MATE"}
    services = ("org.freedesktop.mate.Notifications", "org.mate.panel.*")
    label = True
    button = (-74, -29)
    tray = Box(900, 0, 300, 28)  # without the clock
    empty_panel = (700, 12)

    def gsettings(self):
        theme = "BlackMATE" if self.dark else "Menta"
        return f"[org/mate/desktop/interface]\ngtk-theme='{theme}'\n"

    def begin(self):
        self.start("marco", ["marco", "--no-composite"])
        self.await_window_manager()
        self.start("settings", ["mate-settings-daemon"])
        self.start("caja", ["caja", "--force-desktop", "--no-default-window"])

    def run_panel(self):
        return self.start("mate-panel", ["mate-panel"])

    def daemon(self):
        if self.bus.owner(NOTIFICATIONS) is None:  # it ends when it is idle, and is started again when needed
            Mate(self).start()
        return super().daemon()


class LxqtHost(X11Host):
    packages = (
        "lxqt-panel",
        "lxqt-notificationd",
        "lxqt-themes",
        "openbox",
        "pcmanfm-qt",
        "breeze-icon-theme",
    )
    version_of = "lxqt-panel"
    variables = {"XDG_CURRENT_DESKTOP": "LXQt"}
    tooltip = "title"
    button = (-74, -29)
    panel = Box(0, SCREEN.height - 32, SCREEN.width, 32)
    tray = Box(SCREEN.width - 200, SCREEN.height - 32, 200, 32)
    empty_panel = (SCREEN.width // 2, SCREEN.height - 16)

    def theme(self):
        return "dark" if self.dark else "light"

    def prepare(self):
        folder = self.config / "lxqt"
        folder.mkdir()
        (folder / "panel.conf").write_text(LXQT_PANEL, encoding="utf-8")
        text = f"[General]\ntheme={self.theme()}\nicon_theme=breeze\n"
        (folder / "lxqt.conf").write_text(text, encoding="utf-8")

    def begin(self):
        self.start("openbox", ["openbox"])
        self.await_window_manager()
        self.start("pcmanfm-qt", ["pcmanfm-qt", "--desktop"])
        self.start("lxqt-notificationd", ["lxqt-notificationd"])
        self.await_name(NOTIFICATIONS)

    def run_panel(self):
        return self.start("lxqt-panel", ["lxqt-panel"])


class Tint2Host(X11Host):
    """A tray of the older kind, without a watcher."""

    packages = ("tint2", "xfwm4", "xfconf", "dunst")
    version_of = "tint2"
    tooltip = "text or title"
    tray = Box(SCREEN.width - 100, 0, 100, 28)

    def prepare(self):
        text = TINT2.format(colour="#222222" if self.dark else "#f0f0f0")
        (self.folder / "tint2rc").write_text(text, encoding="utf-8")

    def begin(self):
        self._start_settings()
        self.start("xfwm4", ["xfwm4", "--compositor=off"])
        self.await_window_manager()
        Dunst(self).start()

    def run_panel(self):
        return self.start("tint2", ["tint2", "-c", self.folder / "tint2rc"])

    def ready(self):
        return bool(self.windows("tint2"))


class CinnamonHost(X11Host):
    packages = ("cinnamon", "xapps-common", "xapp-sn-watcher", "adwaita-icon-theme", "python3-dbusmock")
    version_of = "cinnamon"
    variables = {"XDG_CURRENT_DESKTOP": "X-Cinnamon"}
    services = ("org.cinnamon.*", "org.Cinnamon.*", "org.x.*", "ca.desrt.dconf")
    both_themes = False
    panel = Box(0, SCREEN.height - 40, SCREEN.width, 40)
    tray = Box(900, SCREEN.height - 40, 290, 40)
    empty_panel = (SCREEN.width // 2, SCREEN.height - 20)
    button = (-335, -24)
    watcher = Path("/usr/libexec/xapps/sn-watcher/xapp-sn-watcher")

    def begin(self):
        self.start("logind", ["python3", "-m", "dbusmock", "--system", "--template", "logind"])

    def run_panel(self):
        self._watcher = self.start("xapp-sn-watcher", [self.watcher])
        return self.start("cinnamon", ["cinnamon", "--replace"])

    def kill_panel(self):
        self._watcher.kill()
        super().kill_panel()


class BudgieHost(X11Host):
    """With the applet for Ayatana indicators; up to 10.7 no other applet shows items."""

    packages = (
        "budgie-core",
        "budgie-indicator-applet",
        "ayatana-indicator-application",
        "adwaita-icon-theme",
        "python3-dbusmock",
    )
    version_of = "budgie-core"
    variables = {"XDG_CURRENT_DESKTOP": "Budgie:GNOME"}
    services = ("org.gnome.*", "org.budgie*", "ca.desrt.dconf")
    both_themes = False  # its own theme draws a dark panel, whatever the setting says
    label = True
    opens = "menu"
    menu_button = 1
    tooltip = None
    button = (-201, -36)
    panel = Box(0, SCREEN.height - 36, SCREEN.width, 36)
    tray = Box(900, SCREEN.height - 36, 380, 36)
    empty_panel = (SCREEN.width // 2, SCREEN.height - 18)
    applet = "AppIndicator Applet"
    service = "/usr/libexec/ayatana-indicator-application/ayatana-indicator-application-service"

    def gsettings(self):
        return BUDGIE_PANEL.format(applet=self.applet)

    def begin(self):
        self.start("logind", ["python3", "-m", "dbusmock", "--system", "--template", "logind"])
        self.start_watcher()
        self.start("budgie-wm", ["budgie-wm", "--x11"])
        self.await_window_manager()
        self.start("budgie-daemon", ["budgie-daemon"])
        self.await_name(NOTIFICATIONS)

    def run_panel(self):
        return self.start("budgie-panel", ["budgie-panel"])

    def start_watcher(self):
        self.start("indicators", [self.service])

    def kill_panel(self):
        """The watcher, in the indicators' service, stays and does not notice."""
        self._panel.kill()


class BudgieTrayHost(BudgieHost):
    """With Budgie's own tray: for X11 icons up to 10.7, then for items."""

    packages = ("budgie-core", "adwaita-icon-theme", "python3-dbusmock")
    label = False
    opens = "click"
    menu_button = 3
    tooltip = "text or title"
    applet = "System Tray"

    def start_watcher(self):
        """The watcher is in the panel."""

    def ready(self):
        return self._panel.running


class Plasma:
    """What Plasma has in both kinds of session; a mixin."""

    packages = ("plasma-desktop", "plasma-workspace", "breeze", "breeze-icon-theme", "fonts-noto-core")
    version_of = "plasma-workspace"
    services = ("org.kde.*",)
    variables = {
        "XDG_CURRENT_DESKTOP": "KDE",
        "KDE_FULL_SESSION": "true",
        "KDE_SESSION_VERSION": "6" if shutil.which("kded6") else "5",
        "QT_QPA_PLATFORMTHEME": "kde",
        "XDG_MENU_PREFIX": "plasma-",
    }
    recolours = True
    button = (-60, -22)

    def prepare(self):
        (self.config / "kscreenlockerrc").write_text("[Daemon]\nAutolock=false\n", encoding="utf-8")
        (self.config / "kwinrc").write_text("[Compositing]\nEnabled=false\n", encoding="utf-8")
        theme, colours = ("breeze-dark", "BreezeDark") if self.dark else ("default", "BreezeLight")
        (self.config / "plasmarc").write_text(f"[Theme]\nname={theme}\n", encoding="utf-8")
        (self.config / "kdeglobals").write_text(f"[General]\nColorScheme={colours}\n", encoding="utf-8")

    @staticmethod
    def kded():
        """The process with the watcher, of Plasma 6 or 5."""
        return shutil.which("kded6") or shutil.which("kded5")

    def ready(self):
        """The watcher is in another process and does not notice the panel's end."""
        return self.bus.owner(f"org.kde.StatusNotifierHost-{self._panel.pid}") is not None


class PlasmaHost(Plasma, X11Host):
    packages = (*Plasma.packages, "kwin-x11")
    panel = Box(0, SCREEN.height - 44, SCREEN.width, 44)
    tray = Box(1000, SCREEN.height - 44, 125, 44)  # without the clock
    empty_panel = (SCREEN.width // 2, SCREEN.height - 20)

    def begin(self):
        self.start("kded", [self.kded()])
        self.start("kwin_x11", ["kwin_x11", "--replace"])
        self.await_window_manager()

    def run_panel(self):
        return self.start("plasmashell", ["plasmashell", "--no-respawn"])
