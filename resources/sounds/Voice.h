// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

/// Samples per second of everything that is made here.
inline constexpr double sampleRate = 48000;

/// A sound as numbers, one channel; 1 is full scale, and until it is finished it may be more.
using Samples = std::vector<double>;

/// What a voice sounds with.
enum class Wave {
    Sine,
    Triangle, ///< the odd harmonics below half the sample rate
    Noise,    ///< white, the same at every build, through a band around the pitch
};

/// A pitch in Hz that slides; at `seconds` it has done 95 percent of the way.
struct Pitch {
    Pitch(double steady) : from(steady), to(steady) {}
    Pitch(double start, double end, double duration) : from(start), to(end), seconds(duration) {}

    double from;
    double to;
    double seconds = 1;
};

/// How loud a voice is as time goes by: it rises, stays, and fades away.
struct Envelope {
    double attack = 0.002; ///< seconds of a rise without corners
    double hold = 0;       ///< seconds at its full level
    double fade = 1;       ///< seconds from there until it is 60 dB weaker
};

/// A slow change of loudness.
struct Tremolo {
    double rate = 0;  ///< Hz
    double depth = 0; ///< 0 none, 1 down to silence
};

/// One thing that sounds.
struct Voice {
    Wave wave = Wave::Sine;
    Pitch pitch;
    double level = 1;
    double start = 0; ///< seconds
    Envelope envelope = {};
    Tremolo tremolo = {};
    double narrowness = 1; ///< of the noise's band: its middle divided by its width
};

/// Adds the voice to what is there; what would be after the end is left out.
void add(const Voice& voice, Samples& samples);

/// Voices that sound together.
using Voices = std::vector<Voice>;

/// The voices, and after them once more for each echo: later by `delay` seconds, weaker by the factor `level`.
Voices echoed(Voices voices, int echoes, double delay, double level);

/// Makes a sound out of a mixture: no constant part, zero at both ends with ramps, and the highest peak at `peak`.
void finish(Samples& samples, double peak);
