// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// A function of one of the modules that stand beside the executable, such as "velmora-chart". The module is loaded for
/// it and stays. Null when it is not there, as in half a bundle, or is for another version: one that took the place of
/// ours while we ran, since the first use may be weeks after the start. From any thread.
void* functionOfModule(const char* module, const char* function);
