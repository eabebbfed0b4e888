// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

/// The colours of Plasma 5.27's dark scheme, shortened: each text a little different.
inline constexpr Appearance::Colours breezeDark{.window = {42, 46, 50},
                                                .windowText = {250, 250, 250},
                                                .base = {27, 30, 32},
                                                .text = {251, 251, 251},
                                                .button = {49, 54, 59},
                                                .buttonText = {252, 252, 252},
                                                .highlight = {61, 174, 233},
                                                .highlightedText = {253, 253, 253}};
