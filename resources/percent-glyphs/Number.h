// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Shape.h"

/// The height of every digit; numbers are drawn from y = 0 to here.
inline constexpr double numberHeight = 13;

/// A percentage, 0 to 100, in the middle of a width of 20. Each digit of one- and two-digit numbers has a cell of the
/// same width, so that nothing moves when the number changes; only the digits of 100 are narrower.
Shape numberShape(int percent);
