// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

/// Draws the settings window in every state with the current palette. `file` returns the file for the name of a state.
void drawSettings(const std::function<QString(const char*)>& file);
