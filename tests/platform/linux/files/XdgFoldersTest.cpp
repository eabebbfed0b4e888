// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/XdgFolders.h"

#include "support/Environment.h"

#include <gtest/gtest.h>

#include <optional>

TEST(XdgFolders, OfTheSystemAreByRankAndAbsolute) {
    using Folders = std::vector<std::filesystem::path>;
    for (const auto& [variable, folders] : std::vector<std::pair<std::optional<std::string>, Folders>>{
             {std::nullopt, {"/etc/xdg"}},
             {"", {"/etc/xdg"}},
             {"/a:/b c", {"/a", "/b c"}},
             {":/a::relative:/b:", {"/a", "/b"}},
             {"relative", {}},
         }) {
        const Environment environment{{"XDG_CONFIG_DIRS", variable}};
        EXPECT_EQ(xdgConfigFolders(), folders) << variable.value_or("unset");
    }
}
