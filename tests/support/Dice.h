// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <random>
#include <vector>

/// Choices that depend on the seed alone, not on the standard library's distributions.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}

    /// 0 to `count` - 1.
    std::uint64_t below(std::uint64_t count) { return engine_() % count; }

    /// True `percent` times in a hundred.
    bool chance(std::uint64_t percent) { return below(100) < percent; }

    bool oneIn(std::uint64_t number) { return below(number) == 0; }

    bool coin() { return chance(50); }

    std::int64_t from(std::int64_t least, std::int64_t most) {
        return least + static_cast<std::int64_t>(below(static_cast<std::uint64_t>(most - least + 1)));
    }

    template <class T>
    T of(const std::vector<T>& choices) {
        return choices[below(choices.size())];
    }

private:
    std::mt19937_64 engine_;
};
