// SPDX-License-Identifier: GPL-3.0-or-later
//
// Laptop loudspeakers produce next to nothing below 200 Hz, so the low sounds rely on their overtones.
#include "Recipes.h"

#include <cmath>
#include <numbers>

namespace {

/// One of the tones of something that is struck.
struct Mode {
    double hertz;
    double level;
    double fade; ///< seconds until it is 60 dB weaker
};

Voices struck(const std::vector<Mode>& modes) {
    Voices voices;
    for (const Mode& mode : modes)
        voices.push_back({.pitch = mode.hertz, .level = mode.level, .envelope = {.attack = 0.001, .fade = mode.fade}});
    return voices;
}

Voices together(Voices voices, const Voices& more) {
    voices.insert(voices.end(), more.begin(), more.end());
    return voices;
}

// The rim of a glass vibrates in 2, 3, 4, 5 waves around it: n(n²-1)/√(n²+1), which is 1, 2.83, 5.42 and 8.77. No
// glass is quite round, so each mode is a pair of tones, which beat.
Voices glass() {
    return struck({{1050, 0.5, 1.8},
                   {1053, 0.12, 1.8},
                   {2970, 0.9, 1.5},
                   {2976, 0.25, 1.5},
                   {5694, 0.6, 1.0},
                   {5704, 0.2, 1.0},
                   {9209, 0.4, 0.5}});
}

Voices ping() {
    return {{.wave = Wave::Triangle, .pitch = 1760, .envelope = {.attack = 0.004, .hold = 0.05, .fade = 0.8}}};
}

// The louder a brass tone, the brighter it is, so its upper harmonics begin later and end sooner.
Voices brass(double hertz, double start, double hold) {
    Voices voices;
    for (int harmonic = 1; harmonic <= 9; ++harmonic)
        voices.push_back(
            {.pitch = {hertz * harmonic * 0.985, hertz * harmonic, 0.05},
             .level = std::pow(harmonic, -0.9),
             .start = start,
             .envelope = {.attack = 0.02 + 0.008 * harmonic, .hold = hold, .fade = 0.9 - 0.07 * harmonic}});
    return voices;
}

// F, A and C, one after the other, each held.
Voices hero() {
    return together(together(brass(349.2, 0, 0.55), brass(440.0, 0.17, 0.4)), brass(523.3, 0.34, 0.45));
}

Voices submarine() {
    return echoed({{.pitch = {392, 378, 0.3}, .envelope = {.attack = 0.015, .hold = 0.07, .fade = 0.45}},
                   {.pitch = {784, 756, 0.3}, .level = 0.2, .envelope = {.attack = 0.015, .hold = 0.05, .fade = 0.3}}},
                  3, 0.36, 0.4);
}

// A string plucked at a sixth of its length and slapped on the fingerboard: the pitch starts sharp.
Voices funk() {
    constexpr double string = 98.0;
    Voices voices{{.wave = Wave::Noise,
                   .pitch = 2600,
                   .level = 1.2,
                   .envelope = {.attack = 0.001, .fade = 0.03},
                   .narrowness = 0.8}};
    for (int harmonic = 1; harmonic <= 18; ++harmonic)
        voices.push_back({.pitch = {string * harmonic * 1.06, string * harmonic, 0.06},
                          .level = std::sin(std::numbers::pi * harmonic / 6) / std::sqrt(harmonic),
                          .envelope = {.attack = 0.001, .fade = 0.65 / (1 + 0.12 * harmonic)}});
    return voices;
}

Voices basso() {
    Voices voices;
    for (int harmonic = 1; harmonic <= 4; ++harmonic)
        voices.push_back({.pitch = 147.0 * harmonic,
                          .level = std::pow(0.55, harmonic - 1),
                          .envelope = {.attack = 0.02, .hold = 0.3, .fade = 0.45}});
    return voices;
}

// Mostly air; the narrow band is the resonance of the hollow.
Voices blow() {
    constexpr Envelope breath{.attack = 0.18, .hold = 0.25, .fade = 0.7};
    return {{.wave = Wave::Noise, .pitch = {700, 1100, 0.6}, .level = 1, .envelope = breath, .narrowness = 0.6},
            {.wave = Wave::Noise, .pitch = 520, .level = 5, .envelope = breath, .narrowness = 14}};
}

// The resonance of the air in the neck, and the puff that excites it.
Voices bottle() {
    return {{.pitch = {350, 262, 0.22}, .envelope = {.attack = 0.006, .hold = 0.03, .fade = 0.42}},
            {.pitch = {1050, 786, 0.22}, .level = 0.08, .envelope = {.attack = 0.006, .fade = 0.15}},
            {.wave = Wave::Noise, .pitch = 350, .level = 0.6, .envelope = {.attack = 0.004, .fade = 0.08}}};
}

// A croak is a row of pulses that ring in the throat.
Voices croak(double start, int pulses, double gap, double throat) {
    Voices voices;
    for (int pulse = 0; pulse < pulses; ++pulse) {
        const double swell = std::sin(std::numbers::pi * (pulse + 1) / (pulses + 1));
        for (const double tone : {1.0, 2.1, 3.4})
            voices.push_back({.pitch = throat * tone,
                              .level = swell / tone,
                              .start = start + pulse * gap,
                              .envelope = {.attack = 0.001, .fade = 0.022}});
    }
    return voices;
}

Voices frog() {
    return together(croak(0, 10, 0.019, 620), croak(0.27, 13, 0.016, 760));
}

// V, for Velmora: three dits and a dah, with pauses as long as a dit.
Voices morse() {
    constexpr double dit = 0.075;
    Voices voices;
    const auto beep = [&](double start, double seconds) {
        for (const double harmonic : {1.0, 3.0})
            voices.push_back({.pitch = 700 * harmonic,
                              .level = harmonic == 1 ? 1 : 0.12,
                              .start = start,
                              .envelope = {.attack = 0.005, .hold = seconds - 0.01, .fade = 0.02}});
    };
    beep(0, dit);
    beep(2 * dit, dit);
    beep(4 * dit, dit);
    beep(6 * dit, 3 * dit);
    return voices;
}

Voices pop() {
    return {{.pitch = {260, 1500, 0.11}, .envelope = {.attack = 0.004, .hold = 0.03, .fade = 0.07}}};
}

// A soft rattle, 24 times a second.
Voices purr() {
    constexpr Envelope breath{.attack = 0.35, .hold = 0.25, .fade = 1.0};
    constexpr Tremolo rattle{.rate = 24, .depth = 0.9};
    return {{.pitch = 165, .level = 1, .envelope = breath, .tremolo = rattle},
            {.pitch = 330, .level = 0.7, .envelope = breath, .tremolo = rattle},
            {.wave = Wave::Noise, .pitch = 500, .level = 1.2, .envelope = breath, .tremolo = rattle}};
}

// A xylophone bar is cut so that its second tone is the twelfth; the third is not tuned.
Voices sosumi() {
    return together(struck({{784, 1, 0.55}, {2352, 0.5, 0.22}, {5010, 0.25, 0.09}}),
                    {{.wave = Wave::Noise, .pitch = 1800, .level = 0.6, .envelope = {.attack = 0.001, .fade = 0.02}}});
}

Voices tink() {
    return struck({{5230, 0.8, 0.16}, {7940, 1, 0.13}, {8010, 0.6, 0.13}, {11650, 0.6, 0.08}});
}

} // namespace

std::vector<Recipe> recipes() {
    return {
        {"Glass", 1.5, glass()},    {"Ping", 0.9, ping()},    {"Hero", 1.5, hero()}, {"Submarine", 1.5, submarine()},
        {"Funk", 0.5, funk()},      {"Basso", 0.7, basso()},  {"Blow", 1.1, blow()}, {"Bottle", 0.5, bottle()},
        {"Frog", 0.55, frog()},     {"Morse", 0.75, morse()}, {"Pop", 0.2, pop()},   {"Purr", 1.4, purr()},
        {"Sosumi", 0.65, sosumi()}, {"Tink", 0.22, tink()},
    };
}
