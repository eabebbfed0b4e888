// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Bundle.h"

/// A bundle that is where it should be, unless told otherwise.
class FakeBundle final : public Bundle {
public:
    std::filesystem::path place = "/opt/Velmora.app";
    std::optional<std::string> name = "app.velmora.Velmora";

    std::filesystem::path location() const override { return place; }
    std::optional<std::string> identifier() const override { return name; }
};
