// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

/// The kernel's clocks.
class SystemClock final : public Clock {
public:
    Date now() const override;
    Duration uptime() const override;
    Duration slept() const override;
};
