// SPDX-License-Identifier: GPL-3.0-or-later
#include "Voice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <numeric>

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr double minus60Decibels = -6.907755278982137; // the exponent: ln(0.001)

/// A smooth rise from 0 to 1, without a corner at either end.
double ramp(double share) {
    return 0.5 - 0.5 * std::cos(std::numbers::pi * std::clamp(share, 0.0, 1.0));
}

double loudness(const Envelope& envelope, double seconds) {
    if (seconds < envelope.attack)
        return ramp(seconds / envelope.attack);
    const double fading = std::max(0.0, seconds - envelope.attack - envelope.hold);
    return std::exp(minus60Decibels * fading / envelope.fade);
}

double loudness(const Tremolo& tremolo, double seconds) {
    return 1 - tremolo.depth * (0.5 - 0.5 * std::cos(turn * tremolo.rate * seconds));
}

double frequency(const Pitch& pitch, double seconds) {
    return pitch.to + (pitch.from - pitch.to) * std::exp(-3 * seconds / pitch.seconds); // e^-3 is 5 percent
}

// Summed up from harmonics, because a wave with real corners has some above half the sample rate, which would alias.
double triangle(double phase, double hertz) {
    double value = 0;
    double sign = 1;
    for (int harmonic = 1; harmonic * hertz < sampleRate / 2; harmonic += 2) {
        value += sign * std::sin(turn * harmonic * phase) / (harmonic * harmonic);
        sign = -sign;
    }
    return value;
}

/// Pseudorandom numbers from -1 to 1, always the same ones (xorshift by G. Marsaglia).
class WhiteNoise {
public:
    double next() {
        state_ ^= state_ << 13U;
        state_ ^= state_ >> 7U;
        state_ ^= state_ << 17U;
        return static_cast<double>(state_ >> 11U) * 0x1p-52 - 1;
    }

private:
    std::uint64_t state_ = 0x9E3779B97F4A7C15U;
};

/// A band-pass filter around a frequency (the state variable filter in A. Simper's form).
class Band {
public:
    double pass(double in, double hertz, double narrowness) {
        const double g = std::tan(std::numbers::pi * hertz / sampleRate);
        const double a1 = 1 / (1 + g * (g + 1 / narrowness));
        const double rest = in - low_;
        const double band = a1 * (band_ + g * rest);
        const double low = low_ + g * band;
        band_ = 2 * band - band_;
        low_ = 2 * low - low_;
        return band / narrowness;
    }

private:
    double band_ = 0;
    double low_ = 0;
};

} // namespace

void add(const Voice& voice, Samples& samples) {
    WhiteNoise noise;
    Band band;
    double phase = 0; // in turns
    for (auto i = static_cast<std::size_t>(voice.start * sampleRate); i < samples.size(); ++i) {
        const double seconds = static_cast<double>(i) / sampleRate - voice.start;
        const double hertz = frequency(voice.pitch, seconds);
        double value = 0;
        switch (voice.wave) {
        case Wave::Sine:
            value = std::sin(turn * phase);
            break;
        case Wave::Triangle:
            value = triangle(phase, hertz);
            break;
        case Wave::Noise:
            value = band.pass(noise.next(), hertz, voice.narrowness);
            break;
        }
        samples[i] += voice.level * loudness(voice.envelope, seconds) * loudness(voice.tremolo, seconds) * value;
        phase += hertz / sampleRate;
        phase -= std::floor(phase);
    }
}

Voices echoed(Voices voices, int echoes, double delay, double level) {
    const Voices dry = voices;
    for (int echo = 1; echo <= echoes; ++echo) {
        for (Voice voice : dry) {
            voice.start += echo * delay;
            voice.level *= std::pow(level, echo);
            voices.push_back(voice);
        }
    }
    return voices;
}

void finish(Samples& samples, double peak) {
    if (samples.empty())
        return;
    // A millisecond is short enough for the hardest strike and long enough not to click.
    constexpr double rise = 0.001 * sampleRate;
    constexpr double fall = 0.03 * sampleRate;
    const std::size_t last = samples.size() - 1;
    Samples window(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        window[i] = ramp(static_cast<double>(i) / rise) * ramp(static_cast<double>(last - i) / fall);
    std::transform(samples.begin(), samples.end(), window.begin(), samples.begin(), std::multiplies<>());

    // The constant part is removed in the shape of the window, so that the ends stay at zero.
    const double constant =
        std::accumulate(samples.begin(), samples.end(), 0.0) / std::accumulate(window.begin(), window.end(), 0.0);
    double highest = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] -= constant * window[i];
        highest = std::max(highest, std::abs(samples[i]));
    }
    if (highest > 0)
        std::for_each(samples.begin(), samples.end(), [&](double& sample) { sample *= peak / highest; });
}
