// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Takes the code and constants of the program and its libraries out of its memory, as far as they are the same as in
/// their files. What is needed again comes back from the page cache, 64 KiB at a time; what only the start needed, most
/// of it, does not, and the kernel may use its pages for something else. Qt Widgets stays, for the next window. Does
/// nothing under a debugger, whose breakpoints are in the code.
void giveBackCode();
