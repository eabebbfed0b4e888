// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// No panel with our item reaches further into the screen, in pixels.
constexpr int thickestPanel = 64;

/// How far a panel reaches into a screen from one of its edges, in pixels of `scale` device pixels each, where so many
/// device pixels from that edge on are not free. All screens of an X server share one free area: more than a panel
/// takes is not free because of another screen, which ends elsewhere.
int panelDepth(double reserved, double scale);
