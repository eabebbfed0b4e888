// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/SoundNames.h"
#include "support/Recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace fs = std::filesystem;

namespace {

const fs::path folder = VELMORA_SOUNDS;

WavFile wavFile(const std::string& name) {
    const std::optional<WavFile> file = WavFile::read(folder / (name + ".wav"));
    EXPECT_TRUE(file) << name << " is no WAV file";
    return file.value_or(WavFile{});
}

Recording recording(const std::string& name) {
    return Recording(wavFile(name));
}

class EachSound : public testing::TestWithParam<std::string_view> {};

} // namespace

TEST(Sounds, AreTheseAndNoOthers) {
    std::set<std::string> expected;
    for (const std::string_view name : soundNames)
        expected.insert(std::string(name) + ".wav");
    std::set<std::string> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        found.insert(entry.path().filename());
    EXPECT_EQ(found, expected);
}

TEST_P(EachSound, IsPcmThatEveryPlayerKnows) {
    const WavFile file = wavFile(std::string(GetParam()));
    EXPECT_EQ(file.format, 1U);
    EXPECT_EQ(file.channels, 1U);
    EXPECT_EQ(file.rate, 48000U);
    EXPECT_EQ(file.bytesPerSecond, 96000U);
    EXPECT_EQ(file.bytesPerFrame, 2U);
    EXPECT_EQ(file.bits, 16U);
}

TEST_P(EachSound, IsShort) {
    const Recording sound = recording(std::string(GetParam()));
    EXPECT_GE(sound.seconds(), 0.2);
    EXPECT_LE(sound.seconds(), 1.5);
}

TEST_P(EachSound, PeaksAtMinusThreeDecibels) {
    const Recording sound = recording(std::string(GetParam()));
    EXPECT_NEAR(20 * std::log10(sound.peak(0, sound.seconds())), -3, 0.01);
}

TEST_P(EachSound, HasNoConstantPart) {
    const WavFile file = wavFile(std::string(GetParam()));
    double sum = 0;
    for (const double sample : file.samples)
        sum += sample;
    EXPECT_LT(std::abs(sum) / static_cast<double>(file.samples.size()), 1.0 / 32767);
}

TEST_P(EachSound, BeginsAndEndsWithoutAClick) {
    const WavFile file = wavFile(std::string(GetParam()));
    EXPECT_EQ(file.samples.front(), 0);
    EXPECT_EQ(file.samples.back(), 0);
    const Recording sound(file);
    EXPECT_LT(sound.peak(0, 0.0001), 0.01);
    EXPECT_LT(sound.peak(sound.seconds() - 0.002, sound.seconds()), 0.01);
}

TEST_P(EachSound, IsHeardForMoreThanAnInstantAndFadesAway) {
    const Recording sound = recording(std::string(GetParam()));
    const std::vector<double> envelope = sound.envelope(0.01);
    EXPECT_GE(std::count_if(envelope.begin(), envelope.end(), [](double loudness) { return loudness > -30; }), 5);
    EXPECT_LT(envelope.back(), -20);
}

INSTANTIATE_TEST_SUITE_P(Sounds, EachSound, testing::ValuesIn(soundNames),
                         [](const auto& sound) { return std::string(sound.param); });

TEST(Sounds, AreAllToldApart) {
    // The closest two, Bottle and Sosumi, are 10.8 dB apart; a Ping a third lower and a little shorter is 9.2 dB from
    // Ping.
    constexpr double least = 10;
    std::map<std::string, Recording::Character> characters;
    for (const std::string_view name : soundNames)
        characters[std::string(name)] = recording(std::string(name)).character();
    for (auto one = characters.begin(); one != characters.end(); ++one) {
        for (auto other = std::next(one); other != characters.end(); ++other)
            EXPECT_GT(distance(one->second, other->second), least) << one->first << " and " << other->first;
    }
}

TEST(Sounds, GlassRingsInTonesThatAreNoHarmonics) {
    const Recording glass = recording("Glass");
    for (const double hertz : {1050, 2970, 5694})
        EXPECT_GT(glass.tone(hertz, 0, 0.1), 10 * glass.tone(hertz * 1.1, 0, 0.1)) << hertz;
}

TEST(Sounds, HeroClimbsATriadAndHoldsIt) {
    const Recording hero = recording("Hero");
    const auto sounding = [&](double from) {
        std::vector<int> notes;
        for (const int hertz : {349, 440, 523}) {
            if (hero.tone(hertz, from, from + 0.08) > 0.05)
                notes.push_back(hertz);
        }
        return notes;
    };
    EXPECT_THAT(sounding(0.08), testing::ElementsAre(349));
    EXPECT_THAT(sounding(0.25), testing::ElementsAre(349, 440));
    EXPECT_THAT(sounding(0.5), testing::ElementsAre(349, 440, 523));
}

TEST(Sounds, SubmarineComesBackThreeTimes) {
    const Recording submarine = recording("Submarine");
    EXPECT_EQ(runsAbove(submarine.envelope(0.01), -30).size(), 4U);
}

TEST(Sounds, BlowIsAirAndNoTone) {
    const std::vector<double> spectrum = recording("Blow").spectrum();
    EXPECT_GT(std::count_if(spectrum.begin(), spectrum.end(), [](double energy) { return energy > -30; }), 16);
}

TEST(Sounds, BottleFallsAndPopRises) {
    const Recording bottle = recording("Bottle");
    EXPECT_LT(bottle.pitch(0.15, 0.25), 0.9 * bottle.pitch(0, 0.05));
    const Recording pop = recording("Pop");
    EXPECT_GT(pop.pitch(0.05, 0.08), 2 * pop.pitch(0, 0.02));
}

TEST(Sounds, FrogCroaksTwice) {
    const Recording frog = recording("Frog");
    EXPECT_EQ(runsAbove(frog.envelope(0.02), -30).size(), 2U);
    EXPECT_GT(runsAbove(frog.envelope(0.002), -10).size(), 15U) << "each croak is a row of pulses";
}

TEST(Sounds, MorseIsThreeDitsAndADah) {
    std::vector<double> seconds;
    for (const std::size_t steps : runsAbove(recording("Morse").envelope(0.005), -10))
        seconds.push_back(static_cast<double>(steps) * 0.005);
    using testing::DoubleNear;
    EXPECT_THAT(seconds, testing::ElementsAre(DoubleNear(0.075, 0.015), DoubleNear(0.075, 0.015),
                                              DoubleNear(0.075, 0.015), DoubleNear(0.225, 0.015)));
}

TEST(Sounds, PurrRattlesSoftly) {
    const Recording purr = recording("Purr");
    const std::vector<double> envelope = purr.envelope(0.005);
    const std::vector<double> half(envelope.begin() + 60, envelope.begin() + 160); // the loud half second
    EXPECT_NEAR(static_cast<double>(runsAbove(half, -10).size()), 12, 1);
    EXPECT_LT(purr.pitch(0.3, 0.5), 400);
    EXPECT_LT(purr.peak(0, 0.05), 0.1 * purr.peak(0, purr.seconds()));
}

TEST(Sounds, AreAsHighAsTheirNames) {
    const auto pitch = [](const std::string& name) { return recording(name).pitch(0.02, 0.15); };
    EXPECT_LT(pitch("Basso"), 200);
    EXPECT_LT(pitch("Funk"), 400);
    EXPECT_NEAR(pitch("Sosumi"), 784, 8);
    EXPECT_NEAR(pitch("Ping"), 1760, 8);
    EXPECT_GT(pitch("Tink"), 4000);
}
