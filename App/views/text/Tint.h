// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The colours that views speak of; which colour that is on the screen, light or dark, is decided where it is drawn.
enum class Tint { primary, secondary, accent, green, orange, red, yellow };
