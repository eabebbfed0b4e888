// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Leaves the right to take the focus, which a panel or launcher hands over, where Qt takes it from when the next
/// window asks for the focus: in the environment. A token of more than 4 KiB is dropped; compositors' have some 40
/// bytes.
void leaveActivationToken(const QString& token);
