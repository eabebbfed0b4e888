// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LoginItem.h"

#include <filesystem>
#include <string_view>
#include <vector>

class Bundle;
class Files;

/// Start at login by an entry in the user's "autostart" folder, named after the bundle. Such an entry hides those of
/// the same name in the system's folders, so it can also switch them off.
class XdgAutostart final : public LoginItem {
public:
    /// Where the user's entry is.
    static std::filesystem::path file(const std::filesystem::path& configHome, std::string_view identifier);

    /// `configHome` and `configFolders` are the user's and the system's configuration folders, most important first.
    XdgAutostart(const Bundle& bundle, Files& files, std::filesystem::path configHome,
                 std::vector<std::filesystem::path> configFolders);

    bool isEnabled() const override;
    [[nodiscard]] std::optional<std::string> registerItem() override;
    [[nodiscard]] std::optional<std::string> unregisterItem() override;

private:
    const Bundle& bundle_;
    Files& files_;
    std::filesystem::path configHome_;
    std::vector<std::filesystem::path> configFolders_;

    std::optional<std::filesystem::path> systemFile(std::string_view identifier) const;
    bool starts(const std::filesystem::path& file) const;
};
