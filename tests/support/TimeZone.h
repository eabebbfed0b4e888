// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

/// Puts the process into a time zone for as long as this lives.
class TimeZone {
public:
    explicit TimeZone(const char* name) {
        if (const char* zone = std::getenv("TZ"))
            before_ = zone;
        ::setenv("TZ", name, 1);
        tzset();
    }
    ~TimeZone() {
        if (before_)
            ::setenv("TZ", before_->c_str(), 1);
        else
            ::unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    std::optional<std::string> before_;
};
