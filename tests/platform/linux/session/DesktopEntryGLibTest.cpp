// SPDX-License-Identifier: GPL-3.0-or-later
// The reader of desktop entries beside the one that most desktops use.
#include "platform/linux/session/DesktopEntry.h"
#include "support/Dice.h"
#include "support/GLibKeyFile.h"

#include <gtest/gtest.h>

namespace {

std::string anyOf(Dice& dice, const std::vector<std::string>& pieces, std::uint64_t most) {
    std::string text;
    for (std::uint64_t i = dice.below(most + 1); i > 0; --i)
        text += dice.of(pieces);
    return text;
}

} // namespace

TEST(DesktopEntryAndGLib, WhatWeReadGLibReadsTheSame) {
    const std::vector<std::string> pieces{"\n",      "\n",          "\n",        "\r\n",     "\n\n",
                                          "Name",    "Hidden",      "Name[de]",  "=",        "=",
                                          " ",       "\t",          "true",      "false",    "1",
                                          "0",       "\\",          "\\s",       "\\n",      "\\\\",
                                          "#",       "# comment\n", "[",         "]",        "ü",
                                          "\xff",    "[Other]\n",   "a b",       "-",        "[Desktop Entry]\n",
                                          "\nName=", "\v",          "\nHidden=", "Name=a\n", "\nHidden=true\n",
                                          "\f",      "%",           ";",         "_"};
    Dice dice(2);
    int read = 0;
    int values = 0;
    for (int round = 0; round < 50000; ++round) {
        const std::string text = (dice.chance(90) ? "[Desktop Entry]\n" : "") + anyOf(dice, pieces, 8);
        const auto entry = DesktopEntry::parse(text);
        if (!entry)
            continue;
        ++read;
        const GLibKeyFile glib(text);
        ASSERT_TRUE(glib.isLoaded()) << testing::PrintToString(text);
        for (const char* key : {"Name", "Hidden", "Name[de]"}) {
            const auto value = entry->string(key);
            if (!value)
                continue;
            ++values;
            ASSERT_EQ(value, glib.string(key)) << key << " in " << testing::PrintToString(text);
        }
        ASSERT_EQ(entry->boolean("Hidden"), glib.boolean("Hidden")) << testing::PrintToString(text);
    }
    EXPECT_GT(read, 5000) << "too little to compare";
    EXPECT_GT(values, 2000);
}

TEST(DesktopEntryAndGLib, WhatWeCutGLibCutsTheSame) {
    const std::vector<std::string> pieces{" ",    "  ", "\t", "\n", "\"", "\"",  "'", "\\",
                                          "\\\"", "$",  "`",  "#",  "a",  "b c", "ü"};
    Dice dice(3);
    int cut = 0;
    for (int round = 0; round < 50000; ++round) {
        const std::string line = anyOf(dice, pieces, 8);
        const auto entry = DesktopEntry::parse("[Desktop Entry]\nExec=" + desktopEntryValue(line) + "\n");
        ASSERT_TRUE(entry);
        const auto words = entry->command("Exec");
        if (words.empty())
            continue;
        ++cut;
        ASSERT_EQ(words, glibShellWords(line)) << testing::PrintToString(line);
    }
    EXPECT_GT(cut, 5000) << "too little to compare";
}

TEST(DesktopEntryAndGLib, GLibGetsBackWhatWeWrite) {
    const std::vector<std::string> pieces{" ", "\t", "\n", "\r", "\\", "\"", "'", "`", "$", "=", "#",  "[", "]", ";",
                                          "~", "&",  "|",  "*",  "?",  "(",  ")", "a", "/", "ü", "日", "🔋", "!", "\\n"};
    Dice dice(4);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = anyOf(dice, pieces, 8);
        const GLibKeyFile glib("[Desktop Entry]\nName=" + desktopEntryValue(text) +
                               "\nExec=" + desktopEntryValue(desktopEntryArgument(text) + " second") + "\n");
        ASSERT_TRUE(glib.isLoaded());
        ASSERT_EQ(glib.string("Name"), text);
        ASSERT_EQ(glibShellWords(glib.string("Exec").value_or("")), (std::vector<std::string>{text, "second"}));
    }
}
