// SPDX-License-Identifier: GPL-3.0-or-later
//
// Makes the alert sounds: FOLDER/<name>.wav
#include "Recipes.h"
#include "Voice.h"
#include "WavFile.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// Headroom for loudspeakers and for other sounds that are playing.
const double peak = std::pow(10, -3.0 / 20);

Samples sound(const Recipe& recipe) {
    Samples samples(static_cast<std::size_t>(std::lround(recipe.seconds * sampleRate)));
    for (const Voice& voice : recipe.voices)
        add(voice, samples);
    finish(samples, peak);
    return samples;
}

void write(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream.open(file, std::ios::binary | std::ios::trunc);
    stream << bytes;
    stream.close();
}

void writeSounds(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const Recipe& recipe : recipes())
        write(folder / (std::string(recipe.name) + ".wav"), wavFile(sound(recipe)));
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fputs("usage: sounds_generator FOLDER\n", stderr);
        return 2;
    }
    try {
        writeSounds(argv[1]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "cannot write the sounds into %s: %s\n", argv[1], problem.what());
        return 1;
    }
    return 0;
}
