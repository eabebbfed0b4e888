// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Shape.h"

/// The height of every digit; numbers are drawn from y = 0 to here.
inline constexpr double numberHeight = 13;

/// A percentage, 0 to 100, in the middle of a width of 20. Each digit of one- and two-digit numbers has the same cell,
/// so that nothing moves while the number counts; only 100 is narrower.
Shape numberShape(int percent);
