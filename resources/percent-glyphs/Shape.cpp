// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shape.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

namespace {

/// The point at `distance` from one corner on the way to another.
Corner towards(const Corner& from, const Corner& to, double distance) {
    const double share = distance / std::hypot(to.x - from.x, to.y - from.y);
    return {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
}

// Whole hundredths, so that rounding that differs between compilers does not show in a file.
std::string number(double value) {
    const long hundredths = std::lround(value * 100);
    std::string text = hundredths < 0 ? "-" : "";
    text += std::to_string(std::labs(hundredths) / 100);
    if (const long rest = std::labs(hundredths) % 100; rest != 0) {
        text += '.';
        text += std::to_string(rest / 10);
        if (rest % 10 != 0)
            text += std::to_string(rest % 10);
    }
    return text;
}

std::string command(char letter, const Corner& to) {
    return letter + number(to.x) + ' ' + number(to.y);
}

std::string pathData(const Outline& outline) {
    std::string data;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const char arrive = i == 0 ? 'M' : 'L';
        const Corner& corner = outline[i];
        if (corner.radius <= 0) {
            data += command(arrive, corner);
            continue;
        }
        const Corner& before = outline[(i + outline.size() - 1) % outline.size()];
        const Corner& after = outline[(i + 1) % outline.size()];
        data += command(arrive, towards(corner, before, corner.radius));
        data += command('Q', corner);
        data += command(' ', towards(corner, after, corner.radius));
    }
    return data + 'Z';
}

} // namespace

Outline box(double left, double top, double right, double bottom, double radius) {
    return {{left, top, radius}, {right, top, radius}, {right, bottom, radius}, {left, bottom, radius}};
}

Outline hole(Outline outline) {
    std::reverse(outline.begin(), outline.end());
    return outline;
}

Shape moved(Shape shape, double right, double down) {
    for (Outline& outline : shape) {
        for (Corner& corner : outline) {
            corner.x += right;
            corner.y += down;
        }
    }
    return shape;
}

Shape turned(Shape shape, double width, double height) {
    for (Outline& outline : shape) {
        for (Corner& corner : outline) {
            corner.x = width - corner.x;
            corner.y = height - corner.y;
        }
    }
    return shape;
}

void append(Shape& shape, Shape more) {
    std::move(more.begin(), more.end(), std::back_inserter(shape));
}

std::string pathData(const Shape& shape) {
    std::string data;
    for (const Outline& outline : shape) {
        if (!data.empty())
            data += '\n';
        data += pathData(outline);
    }
    return data;
}
