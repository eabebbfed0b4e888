// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

/// The header and the samples of a WAV file.
struct WavFile {
    std::uint32_t format = 0; ///< 1 is PCM
    std::uint32_t channels = 0;
    std::uint32_t rate = 0; ///< samples per second
    std::uint32_t bytesPerSecond = 0;
    std::uint32_t bytesPerFrame = 0;
    std::uint32_t bits = 0;      ///< per sample
    std::vector<double> samples; ///< 1 is full scale

    /// Reads a file of 16-bit samples with the 44-byte header that every player knows; empty if one of its marks or
    /// sizes is wrong.
    static std::optional<WavFile> read(const std::filesystem::path& file);
};

/// A sound as it is heard: the strength of its pitches, and its loudness over time.
class Recording {
public:
    explicit Recording(const WavFile& file);

    double seconds() const;

    /// The largest absolute value of a sample in a part of the sound.
    double peak(double from, double to) const;

    /// The strength of the tone of that frequency in a part of the sound, as the amplitude of an equivalent sine.
    double tone(double hertz, double from, double to) const;

    /// The strongest frequency in a part of the sound, to a few Hz, between 60 and 16,000 Hz.
    double pitch(double from, double to) const;

    /// The loudness in steps of that many seconds: root mean squares in dB below the loudest step, at least -40.
    std::vector<double> envelope(double step) const;

    /// The energy in 24 bands from 80 to 16,000 Hz, a third of an octave each, in dB below their sum, at least -40.
    std::vector<double> spectrum() const;

    /// The features by which the ear tells sounds apart: the spectrum, and the envelope in steps of 25 ms.
    struct Character {
        std::vector<double> spectrum;
        std::vector<double> envelope;
    };
    Character character() const { return {spectrum(), envelope(0.025)}; }

private:
    double rate_;
    std::vector<double> samples_;

    std::size_t index(double seconds) const;
    std::vector<double> powers(std::size_t from, std::size_t to) const;
};

/// How different two sounds are: the root mean square difference of their spectra and envelopes in dB, 40 at most.
double distance(const Recording::Character& one, const Recording::Character& other);

/// The lengths of the runs in which the values are above the limit.
std::vector<std::size_t> runsAbove(const std::vector<double>& values, double limit);
