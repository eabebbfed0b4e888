// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Recording.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <fstream>
#include <iterator>
#include <numbers>
#include <string>
#include <string_view>

namespace {

constexpr double quietest = -40; // dB; anything weaker goes unnoticed beside the rest
constexpr std::size_t window = 8192;

using Spectrum = std::vector<std::complex<double>>;

/// The discrete Fourier transform in place; the size is a power of two.
void transform(Spectrum& values) {
    const std::size_t half = values.size() / 2;
    if (half == 0)
        return;
    Spectrum even(half);
    Spectrum odd(half);
    for (std::size_t i = 0; i < half; ++i) {
        even[i] = values[2 * i];
        odd[i] = values[2 * i + 1];
    }
    transform(even);
    transform(odd);
    for (std::size_t i = 0; i < half; ++i) {
        const double angle = -std::numbers::pi * static_cast<double>(i) / static_cast<double>(half);
        const std::complex<double> turned = std::polar(1.0, angle) * odd[i];
        values[i] = even[i] + turned;
        values[i + half] = even[i] - turned;
    }
}

double decibels(double power, double reference) {
    return power > 0 ? std::max(quietest, 10 * std::log10(power / reference)) : quietest;
}

double meanSquaredDifference(const std::vector<double>& one, const std::vector<double>& other) {
    double sum = 0;
    for (std::size_t i = 0; i < std::max(one.size(), other.size()); ++i) {
        const double difference = (i < one.size() ? one[i] : quietest) - (i < other.size() ? other[i] : quietest);
        sum += difference * difference;
    }
    return sum / static_cast<double>(std::max(one.size(), other.size()));
}

} // namespace

std::optional<WavFile> WavFile::read(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const auto number = [&](std::size_t at, std::size_t size) {
        std::uint32_t value = 0;
        for (std::size_t i = size; i-- > 0;)
            value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
        return value;
    };
    const auto says = [&](std::size_t at, std::string_view mark) { return bytes.compare(at, mark.size(), mark) == 0; };
    if (bytes.size() < 44 || !says(0, "RIFF") || !says(8, "WAVEfmt ") || !says(36, "data"))
        return std::nullopt;
    if (number(4, 4) != bytes.size() - 8 || number(16, 4) != 16 || number(40, 4) != bytes.size() - 44)
        return std::nullopt;
    WavFile file{number(20, 2), number(22, 2), number(24, 4), number(28, 4), number(32, 2), number(34, 2), {}};
    for (std::size_t at = 44; at + 1 < bytes.size(); at += 2)
        file.samples.push_back(static_cast<std::int16_t>(number(at, 2)) / 32767.0);
    return file;
}

Recording::Recording(const WavFile& file) : rate_(file.rate), samples_(file.samples) {}

double Recording::seconds() const {
    return static_cast<double>(samples_.size()) / rate_;
}

std::size_t Recording::index(double seconds) const {
    return std::min(samples_.size(), static_cast<std::size_t>(std::lround(seconds * rate_)));
}

double Recording::peak(double from, double to) const {
    double highest = 0;
    for (std::size_t i = index(from); i < index(to); ++i)
        highest = std::max(highest, std::abs(samples_[i]));
    return highest;
}

double Recording::tone(double hertz, double from, double to) const {
    std::complex<double> sum = 0;
    for (std::size_t i = index(from); i < index(to); ++i)
        sum += samples_[i] * std::polar(1.0, -2 * std::numbers::pi * hertz * static_cast<double>(i) / rate_);
    return 2 * std::abs(sum) / static_cast<double>(index(to) - index(from));
}

/// The power at each of the frequencies i * rate / window in a part no longer than the window.
std::vector<double> Recording::powers(std::size_t from, std::size_t to) const {
    Spectrum values(window);
    const auto length = static_cast<double>(to - from);
    for (std::size_t i = from; i < to; ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i - from) / length;
        values[i - from] = samples_[i] * (0.5 - 0.5 * std::cos(angle));
    }
    transform(values);
    std::vector<double> powers(window / 2);
    std::transform(values.begin(), values.begin() + window / 2, powers.begin(),
                   [](auto value) { return std::norm(value); });
    return powers;
}

double Recording::pitch(double from, double to) const {
    const std::vector<double> found = powers(index(from), std::min(index(to), index(from) + window));
    const auto lowest = found.begin() + static_cast<std::ptrdiff_t>(60 / rate_ * window);
    const auto highest = found.begin() + static_cast<std::ptrdiff_t>(16000 / rate_ * window);
    return static_cast<double>(std::max_element(lowest, highest) - found.begin()) * rate_ / window;
}

std::vector<double> Recording::envelope(double step) const {
    std::vector<double> means;
    const std::size_t length = std::max<std::size_t>(1, index(step));
    for (std::size_t from = 0; from < samples_.size(); from += length) {
        double sum = 0;
        for (std::size_t i = from; i < std::min(samples_.size(), from + length); ++i)
            sum += samples_[i] * samples_[i];
        means.push_back(sum);
    }
    const double loudest = *std::max_element(means.begin(), means.end());
    std::transform(means.begin(), means.end(), means.begin(), [&](double mean) { return decibels(mean, loudest); });
    return means;
}

std::vector<double> Recording::spectrum() const {
    constexpr std::size_t bands = 24;
    constexpr double lowest = 80;
    constexpr double highest = 16000;
    std::vector<double> energies(bands);
    // Short parts that overlap by half, so that strike and echo count as one hears them.
    constexpr std::size_t part = 2048;
    for (std::size_t from = 0; from < samples_.size(); from += part / 2) {
        const std::vector<double> found = powers(from, std::min(samples_.size(), from + part));
        for (std::size_t i = 1; i < found.size(); ++i) {
            const double hertz = static_cast<double>(i) * rate_ / window;
            const double band = bands * std::log(hertz / lowest) / std::log(highest / lowest);
            if (band >= 0 && band < bands)
                energies[static_cast<std::size_t>(band)] += found[i];
        }
    }
    double all = 0;
    for (const double energy : energies)
        all += energy;
    std::transform(energies.begin(), energies.end(), energies.begin(),
                   [&](double energy) { return decibels(energy, all); });
    return energies;
}

double distance(const Recording::Character& one, const Recording::Character& other) {
    return std::sqrt(
        (meanSquaredDifference(one.spectrum, other.spectrum) + meanSquaredDifference(one.envelope, other.envelope)) /
        2);
}

std::vector<std::size_t> runsAbove(const std::vector<double>& values, double limit) {
    std::vector<std::size_t> runs;
    bool inside = false;
    for (const double value : values) {
        if (value > limit && !inside)
            runs.push_back(0);
        inside = value > limit;
        if (inside)
            ++runs.back();
    }
    return runs;
}
