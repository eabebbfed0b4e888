// SPDX-License-Identifier: GPL-3.0-or-later
#include "Number.h"

#include <utility>

namespace {

// Stems are 3 thick and bars 2, all on whole units: at 22 px they are sharp. 3 and 8 have a notch in the waist; 5, 6
// and 9 end in short terminals, because wide openings tell them apart from 8.
constexpr double digitWidth = 9;
constexpr double digitGap = 2;

Shape zero(double width, double stem) {
    return {box(0, 0, width, 13, 3), hole(box(stem, 2, width - stem, 11, 1))};
}

Shape six() {
    return {{{0, 0, 3}, {9, 0, 2.5}, {9, 3}, {6, 3}, {6, 2}, {3, 2, 1}, {3, 5}, {9, 5, 3}, {9, 13, 3}, {0, 13, 3}},
            hole(box(3, 7, 6, 11, 1))};
}

Shape eight() {
    return {{{0, 0, 2.5},
             {9, 0, 2.5},
             {9, 5.5, 1},
             {8.2, 6.2, 0.4},
             {9, 7, 1},
             {9, 13, 3},
             {0, 13, 3},
             {0, 7, 1},
             {0.8, 6.2, 0.4},
             {0, 5.5, 1}},
            hole(box(3, 2, 6, 5, 1)),
            hole(box(3, 7, 6, 11, 1))};
}

Shape digit(int value) {
    switch (value) {
    case 1:
        return {{{3, 0}, {6, 0}, {6, 11}, {8, 11}, {8, 13}, {1, 13}, {1, 11}, {3, 11}, {3, 4}, {1, 5}, {1, 2}}};
    case 2:
        return {{{0, 0, 2.5},
                 {9, 0, 2.5},
                 {9, 5.5, 1.5},
                 {4, 11},
                 {9, 11},
                 {9, 13},
                 {0, 13},
                 {0, 10.5},
                 {6, 5, 1},
                 {6, 2, 1},
                 {3, 2, 1},
                 {3, 4},
                 {0, 4}}};
    case 3:
        return {{{0, 0, 2.5},
                 {9, 0, 2.5},
                 {9, 5.5, 1},
                 {8.2, 6.2, 0.4},
                 {9, 7, 1},
                 {9, 13, 3},
                 {0, 13, 3},
                 {0, 9},
                 {3, 9},
                 {3, 11, 1},
                 {6, 11, 1},
                 {6, 7, 1},
                 {3, 7},
                 {3, 5},
                 {6, 5, 1},
                 {6, 2, 1},
                 {3, 2, 1},
                 {3, 3},
                 {0, 3}}};
    case 4:
        return {{{0, 0},
                 {3, 0},
                 {3, 8},
                 {5, 8},
                 {5, 4},
                 {8, 4},
                 {8, 8},
                 {9, 8},
                 {9, 10},
                 {8, 10},
                 {8, 13},
                 {5, 13},
                 {5, 10},
                 {0, 10}}};
    case 5:
        return {{{0, 0},
                 {9, 0},
                 {9, 2},
                 {3, 2},
                 {3, 5},
                 {9, 5, 3},
                 {9, 13, 3},
                 {0, 13, 3},
                 {0, 11},
                 {6, 11, 1},
                 {6, 7, 1},
                 {0, 7}}};
    case 6:
        return six();
    case 7:
        return {{{0, 0}, {9, 0}, {9, 4}, {5, 13}, {1.6, 13}, {5.8, 2}, {0, 2}}};
    case 8:
        return eight();
    case 9:
        return turned(six(), digitWidth, numberHeight);
    default:
        return zero(digitWidth, 3);
    }
}

/// The stems of 100 are 2 thick: there is no room for more.
Shape hundred() {
    Shape shape{{{2, 0}, {4, 0}, {4, 13}, {2, 13}, {2, 3.5}, {0, 4.5}, {0, 2}}};
    append(shape, moved(zero(6, 2), 6, 0));
    append(shape, moved(zero(6, 2), 14, 0));
    return shape;
}

} // namespace

Shape numberShape(int percent) {
    if (percent >= 100)
        return hundred();
    if (percent < 10)
        return moved(digit(percent), 5, 0);
    Shape shape = digit(percent / 10);
    append(shape, moved(digit(percent % 10), digitWidth + digitGap, 0));
    return shape;
}
