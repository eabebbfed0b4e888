// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/PopoverPlacement.h"

#include <vector>

/// The screens of the session.
std::vector<ScreenArea> allScreens();
