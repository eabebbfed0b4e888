// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Takes the right to take the focus, which a panel or launcher hands over. On Wayland it is left where Qt takes it
/// from when the next window asks for the focus: in the environment. On X11 it is given back at once, because it is
/// only good for showing that a program is being started, and the desktop shows that until then. A token of more than 4
/// KiB is dropped; compositors' have some 40 bytes.
void takeActivationToken(const QString& token);
