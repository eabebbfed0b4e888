// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The colours of the views by name; the actual colour on the screen, light or dark, is chosen where it is drawn.
enum class Tint { primary, secondary, accent, green, orange, red, yellow };
