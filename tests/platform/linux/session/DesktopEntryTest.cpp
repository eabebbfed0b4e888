// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/DesktopEntry.h"

#include "support/Dice.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

using Words = std::vector<std::string>;

/// What the entry says for "Name" when its line is that.
std::optional<std::string> nameIn(const std::string& line) {
    const auto entry = DesktopEntry::parse("[Desktop Entry]\n" + line);
    return entry ? entry->string("Name") : std::nullopt;
}

Words commandIn(const std::string& value) {
    const auto entry = DesktopEntry::parse("[Desktop Entry]\nExec=" + value + "\n");
    return entry ? entry->command("Exec") : Words{"not read at all"};
}

} // namespace

TEST(DesktopEntry, ReadsTheKeysOfItsGroupOnly) {
    const auto entry =
        DesktopEntry::parse("# a comment\n\n[Desktop Entry]\nType=Application\n  # another\n"
                            "Name=Velmora\nName[de]=Akku\n\n[Desktop Action Quit]\nName=Quit\nExec=quit\n"
                            "[Desktop Entry]\nIcon=one");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->string("Type"), "Application");
    EXPECT_EQ(entry->string("Name"), "Velmora");
    EXPECT_EQ(entry->string("Name[de]"), "Akku");
    EXPECT_EQ(entry->string("Icon"), "one");
    EXPECT_EQ(entry->string("Exec"), std::nullopt);
    EXPECT_EQ(entry->string("name"), std::nullopt);
}

TEST(DesktopEntry, KnowsEveryWayToWriteAValue) {
    for (const auto& [line, value] : std::vector<std::pair<std::string, std::optional<std::string>>>{
             {"Name=a b", "a b"},
             {"Name = a", "a"},
             {" \tName\t=\t a", "a"},
             {"Name=a\r\n", "a"},
             {"Name=a\r\nIcon=b\r\n", "a"},
             {"Name=a\r", "a\r"},
             {"Name=", ""},
             {"Name", std::nullopt},
             {"Name=a=b;c#d[e]", "a=b;c#d[e]"},
             {"Name=first\nName=second\n", "second"},
             {"Name[de]=b", std::nullopt},
             {R"(Name=\sa\tb\nc\rd\\e\s)", " a\tb\nc\rd\\e "},
             {R"(Name=\\s)", "\\s"},
             {R"(Name=\x)", std::nullopt},
             {R"(Name=a\)", std::nullopt},
             {"Name=Büro 日本 🔋", "Büro 日本 🔋"},
         })
        EXPECT_EQ(nameIn(line), value) << line;
}

TEST(DesktopEntry, ReadsNothingThatIsNotWhollyOfTheFormat) {
    const std::string good = "[Desktop Entry]\nName=a\n";
    ASSERT_TRUE(DesktopEntry::parse(good));
    for (const std::string& text : {
             ""s,
             "\n"s,
             "# only a comment"s,
             "Name=a\n"s,
             "Name=a\n" + good,
             "[Other]\nName=a\n"s,
             "[Other]\n" + good,
             "[desktop entry]\nName=a\n"s,
             "[Desktop Entry\nName=a\n"s,
             "[Desktop Entry]]\n"s,
             "[Desktop Entry]\f\nName=a\n"s,
             "[Desktop Entry]\r"s,
             "[]\n" + good,
             good + "no equals sign\n",
             good + "=value\n",
             good + "N me=value\n",
             good + "Name[=value\n",
             good + "Name[]=value\n",
             good + "Name[de]x=value\n",
             good + "[de]=value\n",
             good + "Näme=value\n",
             good + "[Gr[oup]\n",
             good + "Icon=\xff\n",
             good + "Icon=\xc3",
             good + "Icon=a\0b\n"s,
             "\0"s + good,
             "\xef\xbb\xbf" + good,
             "\xff\xfe[\0D\0e\0s\0k\0t\0o\0p\0"s,
         })
        EXPECT_FALSE(DesktopEntry::parse(text)) << text;
}

TEST(DesktopEntry, ReadsTenMegabytes) {
    std::string text = "[Desktop Entry]\n";
    for (std::size_t i = 0; text.size() < 10'000'000; ++i)
        text += "Key" + std::to_string(i % 1000) + '=' + std::string(i % 7, '\\') + "\n[Other]\n#\n[Desktop Entry]\n";
    text += "Name=" + std::string(10'000'000, 'x');
    const auto entry = DesktopEntry::parse(text);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->string("Name"), std::string(10'000'000, 'x'));
    EXPECT_TRUE(DesktopEntry::parse("[Desktop Entry]\n" + std::string(10'000'000, '\n')));
    EXPECT_FALSE(DesktopEntry::parse(std::string(10'000'000, '[')));
}

TEST(DesktopEntry, KnowsTrueAndFalse) {
    for (const auto& [value, meaning] : std::vector<std::pair<std::string, std::optional<bool>>>{
             {"true", true},
             {"1", true},
             {"true \t", true},
             {"false", false},
             {"0", false},
             {"", std::nullopt},
             {"True", std::nullopt},
             {"yes", std::nullopt},
             {"\"true\"", std::nullopt},
             {"truefalse", std::nullopt},
         }) {
        const auto entry = DesktopEntry::parse("[Desktop Entry]\nHidden=" + value + "\n");
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->boolean("Hidden"), meaning) << value;
        EXPECT_EQ(entry->boolean("Other"), std::nullopt);
    }
}

TEST(DesktopEntry, CutsACommandIntoItsWords) {
    for (const auto& [value, words] : std::vector<std::pair<std::string, Words>>{
             {"velmora", {"velmora"}},
             {"  velmora  --now ", {"velmora", "--now"}},
             {R"("/opt/a b/AppRun" c)", {"/opt/a b/AppRun", "c"}},
             {R"("a\\\\b\\"c\\$d\\`e")", {R"(a\b"c$d`e)"}},
             {R"("a\\b")", {R"(a\b)"}},
             {R"('a\\ "b'c"d"e)", {R"(a\ "bcde)"}},
             {R"(a\\ b)", {"a b"}},
             {R"("")", {""}},
             {"a %f %U %i", {"a"}},
             {"a 100%% %%f b%fc", {"a", "100%", "%f", "bc"}},
             {"a#b", {"a#b"}},
             {"", {}},
             {"a \"b", {}},
             {"a 'b", {}},
             {R"(a\\)", {}},
             {R"(a\\\n)", {}},
             {R"("a\\\nb")", {}},
             {R"('a\\\nb' "\\\\\n")", {"a\\\nb", "\\\n"}},
             {R"(a\)", {}},
             {"a %", {}},
             {"a #b", {}},
             {R"(\\ #b)", {}},
         })
        EXPECT_EQ(commandIn(value), words) << value;
}

TEST(DesktopEntry, HoldsTextsButNoControlCharacters) {
    for (const char* text : {"", "/opt/Velmora.app", "a\nb\tc\rd", "Büro 日本 🔋", "%$`\"'\\"})
        EXPECT_TRUE(canBeDesktopEntryValue(text)) << text;
    for (const std::string& text : {"a\0b"s, "\x01"s, "\x1b[31m"s, "\x7f"s, "\xff"s, "\xc3"s})
        EXPECT_FALSE(canBeDesktopEntryValue(text)) << text;
}

TEST(DesktopEntry, WritesValuesAsPeopleWould) {
    EXPECT_EQ(desktopEntryValue("/opt/Velmora 2.app"), "/opt/Velmora 2.app");
    EXPECT_EQ(desktopEntryValue(" a\\b\n "), R"(\sa\\b\n\s)");
    EXPECT_EQ(desktopEntryArgument(R"(/a b/"$`\%)"), R"("/a b/\"\$\`\\%%")");
}

TEST(DesktopEntry, GetsBackWhatItWrites) {
    Dice dice(1);
    const std::vector<std::string> pieces{" ",   "\t",  "\n", "\r", "\\", "\"", "'",  "`", "$", "%", "%%", "%f", "=",
                                          "#",   "[",   "]",  ";",  "~",  "&",  "|",  "<", ">", "*", "?",  "(",  ")",
                                          "\\n", "\\s", "a",  "Z",  "/",  "ü",  "日", "🔋", "{", "}", "!",  "-",  "x y"};
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (std::uint64_t i = dice.below(8); i > 0; --i)
            text += dice.of(pieces);
        ASSERT_TRUE(canBeDesktopEntryValue(text));
        const std::string line = desktopEntryArgument(text) + ' ' + desktopEntryArgument("second");
        const auto entry = DesktopEntry::parse("[Desktop Entry]\nName=" + desktopEntryValue(text) +
                                               "\nExec=" + desktopEntryValue(line) + "\n");
        ASSERT_TRUE(entry) << text;
        ASSERT_EQ(entry->string("Name"), text);
        ASSERT_EQ(entry->command("Exec"), (Words{text, "second"}));
    }
}
