// SPDX-License-Identifier: GPL-3.0-or-later
#include "Meaning.h"

#include <algorithm>

namespace {

/// A horizontal battery with its contact.
Shape battery() {
    return {box(0, 0, 18, 6, 1.5), box(19, 2, 20, 4)};
}

// Whole units keep the end of the level sharp at 22 px. Only 0 is empty, and only 100 leaves no gap.
Shape level(int percent) {
    constexpr int room = 16;
    Shape shape = battery();
    if (percent >= 100)
        return shape;
    const int filled = percent <= 0 ? 0 : std::clamp((percent * room + 50) / 100, 1, room - 1);
    shape.push_back(hole(box(1 + filled, 1, 1 + room, 5)));
    return shape;
}

// Lying down it has the whole width; upright it would be six pixels high and only a speck.
Shape bolt() {
    return {{{1, 4}, {12, 0}, {12, 2}, {19, 2}, {8, 6}, {8, 4}}};
}

/// A cable, a body and two pins.
Shape plug() {
    return {{{0, 2},
             {5, 2},
             {5, 0, 2.5},
             {19, 0, 0.8},
             {19, 2, 0.8},
             {14, 2},
             {14, 4},
             {19, 4, 0.8},
             {19, 6, 0.8},
             {5, 6, 2.5},
             {5, 4},
             {0, 4}}};
}

// The tick distinguishes it from a full level on battery.
Shape full() {
    Shape shape = battery();
    shape.push_back(hole({{6, 2.2}, {8.3, 4}, {12.2, 0.6}, {13.2, 1.7}, {8.4, 5.6}, {5, 3.2}}));
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
