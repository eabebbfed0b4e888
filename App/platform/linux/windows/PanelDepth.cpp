// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/PanelDepth.h"

#include "platform/StatusBar.h"

#include <cmath>

int panelDepth(double reserved, double scale) {
    const double depth = std::round(reserved / scale);
    return depth > 0 && depth <= thickestPanel ? static_cast<int>(depth) : 0;
}
