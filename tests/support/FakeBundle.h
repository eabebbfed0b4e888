// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Bundle.h"

/// A bundle in its proper place, unless told otherwise.
class FakeBundle final : public Bundle {
public:
    std::filesystem::path place = "/opt/Velmora.app";
    std::optional<std::string> name = "app.velmora.Velmora";
    bool installed = false; ///< below a prefix, which is `place` then

    std::filesystem::path location() const override { return place; }
    std::optional<std::string> identifier() const override { return name; }
    bool isInstalled() const override { return installed; }
    std::filesystem::path program() const override { return place / (installed ? "bin/velmora" : "AppRun"); }
    std::filesystem::path icon() const override {
        return place / (installed ? "share/icons/hicolor/scalable/apps" : "") / (name.value_or("") + ".svg");
    }
};
