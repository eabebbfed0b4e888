// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/bus/ActivationToken.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cstdlib>

void leaveActivationToken(const QString& token) {
    constexpr QByteArrayView name = "XDG_ACTIVATION_TOKEN=";
    constexpr qsizetype mostBytes = 4096;
    const QByteArray setting = name.toByteArray() + token.toUtf8();
    if (setting.size() > name.size() + mostBytes)
        return;
    // setenv() keeps every value for good, and anybody on the bus may send any number of them. So the environment gets
    // a text that is written over, and that outlives everything.
    static std::array<char, name.size() + mostBytes + 1> variable;
    std::copy_n(setting.constData(), setting.size() + 1, variable.begin()); // with the zero at the end
    ::putenv(variable.data());
}
