// SPDX-License-Identifier: GPL-3.0-or-later
#include "Meaning.h"

#include <algorithm>

namespace {

/// A battery on its own power that is emptier is low; the glyph without a number is the empty battery then.
constexpr int lowPercent = 13;

constexpr int fullWidth = 20;
constexpr int signWidth = 7;

/// A lying battery with its contact, filled to the level.
// Whole units keep the end of the level sharp at 22 px. Only 0 is empty, and only 100 leaves no gap.
Shape battery(int percent, int width) {
    const double right = width - 1;
    Shape shape{{{0, 0, 1.5},
                 {right, 0, 1.5},
                 {right, 2},
                 {right + 1, 2},
                 {right + 1, 6},
                 {right, 6},
                 {right, 8, 1.5},
                 {0, 8, 1.5}}};
    if (percent >= 100)
        return shape;
    const int room = width - 3;
    const int filled = percent <= 0 ? 0 : std::clamp((percent * room + 50) / 100, 1, room - 1);
    shape.push_back(hole(box(1 + filled, 1, 1 + room, 7)));
    return shape;
}

/// An exclamation mark.
Shape mark() {
    return {box(3, 0, 5, 5), box(3, 6, 5, 8)};
}

Shape bolt() {
    return {{{3, 0}, {6, 0}, {4.6, 3}, {6.8, 3}, {1.6, 8}, {2.9, 4.8}, {0.6, 4.8}}};
}

/// Two pins, a body and a cable.
Shape plug() {
    return {{{1, 0},
             {2, 0},
             {2, 2},
             {5, 2},
             {5, 0},
             {6, 0},
             {6, 2},
             {7, 2},
             {7, 6, 2},
             {4, 6},
             {4, 8},
             {3, 8},
             {3, 6},
             {0, 6, 2},
             {0, 2}}};
}

Shape tick() {
    return {{{0, 4.4}, {1.3, 3.1}, {2.8, 4.6}, {5.8, 1.2}, {7, 2.4}, {2.8, 7}}};
}

/// The sign beside the battery; none for an ordinary level.
Shape sign(Meaning meaning, int percent) {
    switch (meaning) {
    case Meaning::Level:
        return percent < lowPercent ? mark() : Shape();
    case Meaning::Bolt:
        return bolt();
    case Meaning::Plug:
        return plug();
    case Meaning::Full:
        return tick();
    }
    return {};
}

} // namespace

std::string_view meaningName(Meaning meaning) {
    switch (meaning) {
    case Meaning::Level:
        return "level";
    case Meaning::Bolt:
        return "bolt";
    case Meaning::Plug:
        return "plug";
    case Meaning::Full:
        return "full";
    }
    return {};
}

Shape meaningShape(Meaning meaning, int percent) {
    const Shape beside = sign(meaning, percent);
    if (beside.empty())
        return battery(percent, fullWidth);
    Shape shape = battery(percent, fullWidth - signWidth - 1);
    append(shape, moved(beside, fullWidth - signWidth, 0));
    return shape;
}
