// SPDX-License-Identifier: GPL-3.0-or-later
#include "Meaning.h"

#include <algorithm>

namespace {

/// A lying battery with its contact.
Shape battery() {
    return {box(0, 0, 20, 6, 1.5), box(21, 2, 22, 4)};
}

// Whole units keep the end of the level sharp at 22 px. Only 0 is empty and only 100 is without a gap.
Shape level(int percent) {
    constexpr int room = 18;
    Shape shape = battery();
    if (percent >= 100)
        return shape;
    const int filled = percent <= 0 ? 0 : std::clamp((percent * room + 50) / 100, 1, room - 1);
    shape.push_back(hole(box(1 + filled, 1, 1 + room, 5)));
    return shape;
}

// Lying down, it gets the whole width; upright it would be six pixels high and a speck.
Shape bolt() {
    return {{{1, 4}, {13, 0}, {13, 2}, {21, 2}, {9, 6}, {9, 4}}};
}

/// A cable, a body and two pins.
Shape plug() {
    return {{{0, 2},
             {6, 2},
             {6, 0, 2.5},
             {21, 0, 0.8},
             {21, 2, 0.8},
             {15, 2},
             {15, 4},
             {21, 4, 0.8},
             {21, 6, 0.8},
             {6, 6, 2.5},
             {6, 4},
             {0, 4}}};
}

// The tick tells it from a full level that is about to be used up.
Shape full() {
    Shape shape = battery();
    shape.push_back(hole({{7, 2.2}, {9.3, 4}, {13.2, 0.6}, {14.2, 1.7}, {9.4, 5.6}, {6, 3.2}}));
    return shape;
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
    switch (meaning) {
    case Meaning::Level:
        return level(percent);
    case Meaning::Bolt:
        return bolt();
    case Meaning::Plug:
        return plug();
    case Meaning::Full:
        return full();
    }
    return {};
}
