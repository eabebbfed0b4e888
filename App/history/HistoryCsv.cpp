// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryCsv.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

constexpr std::int64_t secondsOfDay = 86400;

void append(std::string& text, std::int64_t number) {
    std::array<char, 24> digits{};
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

/// Pads with zeros to two digits.
void appendTwo(std::string& text, std::int64_t number) {
    text += static_cast<char>('0' + number / 10);
    text += static_cast<char>('0' + number % 10);
}

/// Pads with zeros to four digits.
void appendYear(std::string& text, std::int64_t year) {
    if (year < 0 || year > 9999) {
        append(text, year);
        return;
    }
    appendTwo(text, year / 100);
    appendTwo(text, year % 100);
}

/// Appends the date in the proleptic Gregorian calendar. std::chrono's own stops at the year 32767, and a file can hold
/// any time.
void appendDate(std::string& text, std::int64_t daysSince1970) {
    // Counted in eras of 400 years, and in years that begin in March, so that the leap day comes last.
    // From Howard Hinnant's paper on chrono-compatible low-level date algorithms.
    constexpr std::int64_t daysOfEra = 146097;
    const std::int64_t days = daysSince1970 + 719468;
    const std::int64_t era = (days >= 0 ? days : days - (daysOfEra - 1)) / daysOfEra;
    const std::int64_t dayOfEra = days - era * daysOfEra;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153;
    const std::int64_t day = dayOfYear - (153 * marchMonth + 2) / 5 + 1;
    const std::int64_t month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
    appendYear(text, yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
    text += '-';
    appendTwo(text, month);
    text += '-';
    appendTwo(text, day);
}

void appendTimestamp(std::string& text, double t) {
    // Far beyond any meaningful time, and well within the range of the arithmetic.
    constexpr double furthest = 1e15;
    const auto seconds = static_cast<std::int64_t>(std::fmin(std::fmax(std::floor(t), -furthest), furthest));
    const std::int64_t ofDay = ((seconds % secondsOfDay) + secondsOfDay) % secondsOfDay;
    appendDate(text, (seconds - ofDay) / secondsOfDay);
    text += 'T';
    appendTwo(text, ofDay / 3600);
    text += ':';
    appendTwo(text, ofDay / 60 % 60);
    text += ':';
    appendTwo(text, ofDay % 60);
    text += 'Z';
}

std::string_view word(bool value) {
    return value ? "true" : "false";
}

} // namespace

std::string historyCsv(const SampleList& samples) {
    constexpr std::string_view header = "timestamp,percent,charging,plugged_in\n";
    constexpr std::size_t usualLength = 36; // 2026-11-15T08:00:00Z,80,false,false
    std::string text;
    text.reserve(header.size() + samples.size() * usualLength);
    text += header;
    for (const Sample sample : samples) {
        appendTimestamp(text, sample.t);
        text += ',';
        append(text, sample.p);
        text += ',';
        text += word(sample.c);
        text += ',';
        text += word(sample.a);
        text += '\n';
    }
    return text;
}
