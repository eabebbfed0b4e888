// SPDX-License-Identifier: GPL-3.0-or-later
#include "Number.h"

#include <utility>

namespace {

// Stems and bars are 3 thick (the middle bar 2) and lie on whole units: at 22 px they are sharp. 3 and 8 have a notch
// in the waist, 5, 6 and 9 end in short terminals: wide openings are what tells them apart from 8.
constexpr double digitWidth = 10;
constexpr double digitGap = 2;

Shape zero(double width) {
    return {box(0, 0, width, 14, 3.5), hole(box(3, 3, width - 3, 11, 1))};
}

Shape six() {
    return {{{0, 0, 3.5}, {10, 0, 3}, {10, 3}, {3, 3, 1}, {3, 6}, {10, 6, 3}, {10, 14, 3}, {0, 14, 3}},
            hole(box(3, 8, 7, 11, 1))};
}

Shape eight() {
    return {{{0, 0, 3},
             {10, 0, 3},
             {10, 6, 1},
             {9.2, 7, 0.4},
             {10, 8, 1},
             {10, 14, 3},
             {0, 14, 3},
             {0, 8, 1},
             {0.8, 7, 0.4},
             {0, 6, 1}},
            hole(box(3, 3, 7, 6, 1)),
            hole(box(3, 8, 7, 11, 1))};
}

Shape digit(int value) {
    switch (value) {
    case 1:
        return {{{4, 0}, {7, 0}, {7, 11}, {9, 11}, {9, 14}, {1, 14}, {1, 11}, {4, 11}, {4, 4.5}, {1, 6}, {1, 3}}};
    case 2:
        return {{{0, 0, 3},
                 {10, 0, 3},
                 {10, 6, 1.5},
                 {4.5, 11},
                 {10, 11},
                 {10, 14},
                 {0, 14},
                 {0, 10.2},
                 {7, 5.8, 1},
                 {7, 3, 1},
                 {3, 3, 1},
                 {3, 5},
                 {0, 5}}};
    case 3:
        return {{{0, 0, 3},
                 {10, 0, 3},
                 {10, 6, 1},
                 {9.2, 7, 0.4},
                 {10, 8, 1},
                 {10, 14, 3},
                 {0, 14, 3},
                 {0, 10},
                 {3, 10},
                 {3, 11, 1},
                 {7, 11, 1},
                 {7, 8, 1},
                 {3, 8},
                 {3, 6},
                 {7, 6, 1},
                 {7, 3, 1},
                 {3, 3, 1},
                 {3, 4},
                 {0, 4}}};
    case 4:
        return {{{0, 0},
                 {3, 0},
                 {3, 7},
                 {6, 7},
                 {6, 4},
                 {9, 4},
                 {9, 7},
                 {10, 7},
                 {10, 10},
                 {9, 10},
                 {9, 14},
                 {6, 14},
                 {6, 10},
                 {0, 10}}};
    case 5:
        return {{{0, 0},
                 {10, 0},
                 {10, 3},
                 {3, 3},
                 {3, 5},
                 {10, 5, 3},
                 {10, 14, 3},
                 {0, 14, 3},
                 {0, 11},
                 {7, 11, 1},
                 {7, 8, 1},
                 {0, 8}}};
    case 6:
        return six();
    case 7:
        return {{{0, 0}, {10, 0}, {10, 4}, {5.5, 14}, {2, 14}, {6.4, 3}, {0, 3}}};
    case 8:
        return eight();
    case 9:
        return turned(six(), digitWidth, numberHeight);
    default:
        return zero(digitWidth);
    }
}

Shape hundred() {
    Shape shape{{{1, 0}, {4, 0}, {4, 14}, {1, 14}, {1, 4.5}, {0, 5}, {0, 2}}};
    append(shape, moved(zero(8), 5, 0));
    append(shape, moved(zero(8), 14, 0));
    return shape;
}

} // namespace

Shape numberShape(int percent) {
    if (percent >= 100)
        return hundred();
    if (percent < 10)
        return moved(digit(percent), 6, 0);
    Shape shape = digit(percent / 10);
    append(shape, moved(digit(percent % 10), digitWidth + digitGap, 0));
    return shape;
}
