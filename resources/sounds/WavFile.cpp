// SPDX-License-Identifier: GPL-3.0-or-later
#include "WavFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr std::uint32_t bytesOfSample = 2;

/// Appends a number in little-endian order, whatever the machine's is.
void append(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
}

} // namespace

std::string wavFile(const Samples& samples) {
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    const auto size = static_cast<std::uint32_t>(samples.size()) * bytesOfSample;
    std::string bytes = "RIFF";
    append(bytes, 36 + size, 4); // size of all that follows
    bytes += "WAVEfmt ";
    append(bytes, 16, 4); // size of the format
    append(bytes, 1, 2);  // PCM
    append(bytes, 1, 2);  // channels
    append(bytes, rate, 4);
    append(bytes, rate * bytesOfSample, 4);
    append(bytes, bytesOfSample, 2); // of one sample in all channels
    append(bytes, 8 * bytesOfSample, 2);
    bytes += "data";
    append(bytes, size, 4);
    for (const double sample : samples)
        append(bytes, static_cast<std::uint32_t>(std::lround(std::clamp(sample, -1.0, 1.0) * 32767)), 2);
    return bytes;
}
