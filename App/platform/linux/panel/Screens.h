// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/panel/DevicePoint.h"

/// The screens of the session.
std::vector<ScreenArea> allScreens();
