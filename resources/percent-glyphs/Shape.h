// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

/// A corner of an outline, in units of the drawing (y points down); rounding cuts `radius` off both of its edges.
struct Corner {
    double x = 0;
    double y = 0;
    double radius = 0;
};

/// A closed outline, clockwise around what is filled.
using Outline = std::vector<Corner>;

/// Outlines that do not cross. Holes run the other way round, so that every fill rule gives the same picture.
using Shape = std::vector<Outline>;

Outline box(double left, double top, double right, double bottom, double radius = 0);

/// The outline as a hole in the one around it.
Outline hole(Outline outline);

/// The shape, moved to the right and down.
Shape moved(Shape shape, double right, double down);

/// The shape after half a turn inside a cell of that size.
Shape turned(Shape shape, double width, double height);

/// Adds the outlines of `more`.
void append(Shape& shape, Shape more);

/// The shape as data of an SVG path, to a hundredth of a unit, one outline per line.
std::string pathData(const Shape& shape);
