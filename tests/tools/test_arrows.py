# SPDX-License-Identifier: GPL-3.0-or-later
"""Which room of App/ may include headers of which other one, and which headers the core may include at all.

App/CMakeLists.txt says which target links which; this also sees arrows inside a target, and headers that need no
linking.
"""

import re
import unittest
from pathlib import Path

APP = Path(__file__).resolve().parents[2] / "App"

PORTS = "platform"
QT = "platform/qt"
DECIDES = [PORTS, "battery", "history", "alerts"]
FILES = "platform/linux/files"
BUS = "platform/linux/bus"
WINDOWS = "platform/linux/windows"
ADAPTER = [PORTS, QT, FILES, BUS]
MODEL = "shell/model"
WIDGET = [*DECIDES, QT, MODEL, "views/text", "views/style"]

# Every room may include its own headers and those of these rooms.
MAY_INCLUDE = {
    PORTS: [],
    "battery": [PORTS],
    "history": [PORTS, "battery"],
    "alerts": [PORTS, "battery"],
    QT: [PORTS],
    "platform/linux/appearance": ADAPTER,
    BUS: ADAPTER,
    "platform/linux/dialogs": ADAPTER,
    FILES: [PORTS, QT],
    "platform/linux/notifications": ADAPTER,
    "platform/linux/panel": [*ADAPTER, WINDOWS],
    "platform/linux/power": ADAPTER,
    "platform/linux/session": [*ADAPTER, WINDOWS],
    "platform/linux/sound": ADAPTER,
    WINDOWS: ADAPTER,
    "views/text": DECIDES,
    "views/style": [*DECIDES, QT, "views/text"],
    "views/popover": WIDGET,
    "views/settings": WIDGET,
    MODEL: DECIDES,
    "shell/delegate": [*WIDGET, "views/popover", "views/settings"],
}
# The folder shell has three rooms. main makes everything and may include everything, so it is not checked.
SHELL = {"AppModel": MODEL, "Published": MODEL, "AppDelegate": "shell/delegate"}
MAIN = "shell/VelmoraApp.cpp"

# Generated at build time, in no room.
GENERATED = re.compile(r"\w+adaptor\.h$")


def sources():
    return sorted(file.relative_to(APP) for file in APP.rglob("*") if file.suffix in (".h", ".cpp"))


def room(file):
    return SHELL[file.stem] if file.parent.name == "shell" else str(file.parent)


def includes(file):
    """The included names in their brackets or quotes. How a name of ours is written makes no difference."""
    names = re.findall(r'^\s*#\s*include\s*([<"][^>"]+[>"])', (APP / file).read_text(encoding="utf-8"), re.MULTILINE)
    return [f'"{name[1:-1]}"' if (APP / name[1:-1]).is_file() else name for name in names]


def own(file):
    return [Path(name[1:-1]) for name in includes(file) if name[0] == '"' and not GENERATED.search(name[1:-1])]


def core():
    """The files of the core's target and all of our headers that they include."""
    files = {file for file in sources() if str(file.parent) == PORTS}
    for lists in APP.rglob("CMakeLists.txt"):
        for listed in re.findall(r"velmora_sources\(velmora_core\s([^)]*)\)", lists.read_text(encoding="utf-8")):
            files |= {lists.parent.relative_to(APP) / name for name in listed.split()}
    todo = list(files)
    while todo:
        new = set(own(todo.pop())) - files
        files |= new
        todo += new
    return files


class Arrows(unittest.TestCase):
    def test_every_folder_is_a_room(self):
        self.assertEqual({room(file) for file in sources() if str(file) != MAIN}, set(MAY_INCLUDE))

    def test_every_include_is_an_arrow_that_is_allowed(self):
        for file in sources():
            if str(file) == MAIN:
                continue
            here = room(file)
            for header in own(file):
                with self.subTest(file=str(file), header=str(header)):
                    self.assertTrue((APP / header).is_file(), "a header is named by its path below App/")
                    self.assertIn(room(header), [here, *MAY_INCLUDE[here]])

    def test_the_core_includes_the_standard_library_alone(self):
        files = core()
        self.assertIn(Path("shell/AppModel.cpp"), files)
        for file in files:
            for name in includes(file):
                if name.startswith("<"):
                    with self.subTest(file=str(file), header=name):
                        self.assertRegex(name, r"^<([a-z_]+|simdjson\.h)>$")

    def test_only_adapters_and_main_include_their_libraries(self):
        for file in sources():
            if str(file) != MAIN and not str(file).startswith("platform/linux"):
                for name in includes(file):
                    with self.subTest(file=str(file), header=name):
                        self.assertNotRegex(name, r"^<(QDBus|QtDBus|glib|gio|libudev|canberra)")

    def test_every_file_is_listed_by_its_folder(self):
        for file in sources():
            if file.suffix == ".cpp":
                with self.subTest(file=str(file)):
                    lists = (APP / file.parent / "CMakeLists.txt").read_text(encoding="utf-8")
                    self.assertIn(file.name, re.findall(r"[\w.]+", lists))


if __name__ == "__main__":
    unittest.main()
