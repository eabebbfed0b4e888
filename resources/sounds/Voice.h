// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

/// The sample rate of all sounds, in Hz.
inline constexpr double sampleRate = 48000;

/// A sound with one channel; 1 is full scale, which may be exceeded until `finish`.
using Samples = std::vector<double>;

/// The waveform of a voice.
enum class Wave {
    Sine,
    Triangle, ///< the odd harmonics below half the sample rate
    Noise,    ///< white noise, the same in every build, through a band-pass around the pitch
};

/// A pitch in Hz that slides; at `seconds` it has covered 95 percent of the way.
struct Pitch {
    Pitch(double steady) : from(steady), to(steady) {}
    Pitch(double start, double end, double duration) : from(start), to(end), seconds(duration) {}

    double from;
    double to;
    double seconds = 1;
};

/// The loudness of a voice over time: it rises, stays, and fades away.
struct Envelope {
    double attack = 0.002; ///< seconds of a smooth rise
    double hold = 0;       ///< seconds at its full level
    double fade = 1;       ///< seconds from there until it is 60 dB weaker
};

/// A slow change of loudness.
struct Tremolo {
    double rate = 0;  ///< Hz
    double depth = 0; ///< 0 none, 1 down to silence
};

/// One component of a sound.
struct Voice {
    Wave wave = Wave::Sine;
    Pitch pitch;
    double level = 1;
    double start = 0; ///< seconds
    Envelope envelope = {};
    Tremolo tremolo = {};
    double narrowness = 1; ///< of the noise's band: its centre divided by its width
};

/// Adds the voice to the samples, cut off at their end.
void add(const Voice& voice, Samples& samples);

/// Voices that sound together.
using Voices = std::vector<Voice>;

/// The voices, followed by a copy for each echo: later by `delay` seconds, weaker by the factor `level`.
Voices echoed(Voices voices, int echoes, double delay, double level);

/// Turns a mixture into a sound: no constant part, ramps to zero at both ends, and the highest peak at `peak`.
void finish(Samples& samples, double peak);
