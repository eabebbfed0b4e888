// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/AutostartEntry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

using Switch = AutostartEntry::Switch;

namespace {

const std::string head = "[Desktop Entry]\nType=Application\n";

std::string exec(const std::string& command) {
    return head + "Exec=" + command + "\n";
}

/// The entry for a bundle in `folder`.
std::optional<std::string> entryOf(const std::filesystem::path& folder, Switch state = Switch::on) {
    return AutostartEntry::text(folder / "AppRun", folder / "app.velmora.Velmora.svg", state);
}

bool isOn(const std::string& lines) {
    const auto entry = AutostartEntry::parse(exec("/opt/AppRun") + lines);
    EXPECT_TRUE(entry) << lines;
    return entry && entry->isOn;
}

} // namespace

TEST(AutostartEntry, SaysWhatIsStartedAndWhatHasToBeThere) {
    EXPECT_EQ(entryOf("/opt/Velmora.app"), "[Desktop Entry]\n"
                                           "Type=Application\n"
                                           "Name=Velmora\n"
                                           "Exec=\"/opt/Velmora.app/AppRun\"\n"
                                           "TryExec=/opt/Velmora.app/AppRun\n"
                                           "Icon=/opt/Velmora.app/app.velmora.Velmora.svg\n"
                                           "X-GNOME-Autostart-enabled=true\n");
}

TEST(AutostartEntry, OffIsTheSameAndHidden) {
    const std::string on = entryOf("/opt/Velmora.app").value();
    EXPECT_EQ(entryOf("/opt/Velmora.app", Switch::off), on + "Hidden=true\n");
}

TEST(AutostartEntry, GetsBackWhatItWritesWhateverTheFolderIsCalled) {
    for (const char* folder : {"/opt/Velmora.app", "/home/ü/my apps/\"new\" $x `y` \\z", "/100%", "/%f%%", "/a=b",
                               "/a\nb\tc\rd", "/ends with space ", "/it's", "/#;~&|<>*?()[]{}!"}) {
        for (const Switch state : {Switch::on, Switch::off}) {
            const std::string program = std::string(folder) + "/AppRun";
            const AutostartEntry written{.program = program, .tryExec = program, .isOn = state == Switch::on};
            EXPECT_EQ(AutostartEntry::parse(entryOf(folder, state).value()), written) << folder;
        }
    }
}

TEST(AutostartEntry, IsNotWrittenForAFolderThatItCannotName) {
    for (const char* folder : {"/a\x01", "/a\x7f", "/latin1-\xfc", "/half-\xc3"})
        EXPECT_EQ(entryOf(folder), std::nullopt) << folder;
    EXPECT_EQ(AutostartEntry::text("/opt/velmora", "/opt/\x01.svg", Switch::on), std::nullopt);
    EXPECT_EQ(AutostartEntry::text("/opt/\x01", "/opt/velmora.svg", Switch::on), std::nullopt);
}

TEST(AutostartEntry, HandsAProgramThatDesktopsWouldNotFindToAShell) {
    const auto line = [](const char* folder) {
        const std::string text = entryOf(folder).value();
        const std::size_t from = text.find("Exec=");
        return text.substr(from, text.find('\n', from) - from);
    };
    EXPECT_EQ(line("/100%"), R"(Exec=/bin/sh -c "exec \\"\\$0\\"" "/100%%/AppRun")");
    EXPECT_EQ(line("/a=b"), R"(Exec=/bin/sh -c "exec \\"\\$0\\"" "/a=b/AppRun")");
    EXPECT_EQ(line("/a b"), R"(Exec="/a b/AppRun")");
}

TEST(AutostartEntry, KnowsWhatAnEntryOfSomebodyElseStarts) {
    const auto program = [](const std::string& command) {
        const auto entry = AutostartEntry::parse(exec(command));
        return entry ? entry->program.string() : "nothing";
    };
    EXPECT_EQ(program("velmora"), "velmora");
    EXPECT_EQ(program("/opt/AppRun --flag %U"), "/opt/AppRun");
    EXPECT_EQ(program("/bin/sh -c \"sleep 5; /opt/AppRun\""), "/bin/sh");
    EXPECT_EQ(program(R"(/bin/sh -c "exec \\"\\$0\\"")"), "/bin/sh");
    EXPECT_EQ(program("\"\""), "nothing");
    EXPECT_EQ(program(""), "nothing");
    EXPECT_EQ(program("%f"), "nothing");
    EXPECT_EQ(program("\"/opt/AppRun"), "nothing");
    EXPECT_EQ(program("/opt/AppRun \\q"), "nothing");
    EXPECT_EQ(program("\"/opt/a\\$b/AppRun\""), "nothing");
    EXPECT_EQ(program("/opt/AppRun\\"), "nothing");
    EXPECT_EQ(program("/opt/AppRun %"), "nothing");
}

TEST(AutostartEntry, IsNoneWithoutACommandOrOfAnotherType) {
    for (const char* text : {"", "velmora", "[Desktop Entry]\nType=Application\nTryExec=/opt/AppRun\n",
                             "[Desktop Entry]\nExec=/opt/AppRun\n", "[Desktop Entry]\nType=Link\nExec=/opt/AppRun\n",
                             "[Desktop Entry]\nType=Application\nExec=/opt/AppRun\nbroken\n"})
        EXPECT_EQ(AutostartEntry::parse(text), std::nullopt) << text;
    EXPECT_TRUE(AutostartEntry::parse(exec("/opt/AppRun")));
}

TEST(AutostartEntry, IsOffByEitherOfTheDesktopsSwitches) {
    EXPECT_TRUE(isOn(""));
    EXPECT_TRUE(isOn("Hidden=false\nX-GNOME-Autostart-enabled=true\n"));
    EXPECT_TRUE(isOn("Hidden=perhaps\nX-GNOME-Autostart-enabled=\n"));
    EXPECT_TRUE(isOn("[Desktop Action Hide]\nHidden=true\n"));
    EXPECT_FALSE(isOn("Hidden=true\n"));
    EXPECT_FALSE(isOn("Hidden=false\nHidden = true\r\n"));
    EXPECT_FALSE(isOn("X-GNOME-Autostart-enabled=false\n"));
    EXPECT_FALSE(isOn("Hidden=true\nX-GNOME-Autostart-enabled=true\n"));
    EXPECT_FALSE(isOn("Hidden=false\nX-GNOME-Autostart-enabled=false\n"));
}
