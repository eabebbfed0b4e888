// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Environment variables that are set or unset for the lifetime of this object. No other thread may read them while
/// they change.
class Environment {
public:
    using Variables = std::vector<std::pair<std::string, std::optional<std::string>>>;

    Environment(std::initializer_list<Variables::value_type> variables) {
        for (const auto& [name, value] : variables) {
            const char* old = std::getenv(name.c_str());
            before_.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
            set(name, value);
        }
    }
    ~Environment() {
        for (auto variable = before_.rbegin(); variable != before_.rend(); ++variable)
            set(variable->first, variable->second);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    Variables before_;

    static void set(const std::string& name, const std::optional<std::string>& value) {
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }
};
