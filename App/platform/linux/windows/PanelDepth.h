// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The thickness of the panel at one edge of a screen, in Qt's pixels, each of which is `scale` device pixels wide; 0
/// if there is none. `reserved` is what the work area leaves out at that edge, in device pixels. All screens of an X
/// server share one work area, so a large number means that another screen ends elsewhere, not that there is a panel.
int panelDepth(double reserved, double scale);
