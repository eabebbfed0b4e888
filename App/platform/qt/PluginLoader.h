// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// A function from one of our plugins, such as "velmora-sound". The plugin is loaded on first use and stays loaded.
/// Null when it is missing, as in an incomplete bundle, or when another version has replaced ours since the start: the
/// first use may be weeks later. May be called from any thread.
void* pluginFunction(const char* plugin, const char* function);
