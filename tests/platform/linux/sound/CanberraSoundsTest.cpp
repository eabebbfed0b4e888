// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/sound/CanberraSounds.h"

#include "platform/linux/sound/CanberraOutput.h"
#include "support/Environment.h"
#include "support/StandardError.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace fs = std::filesystem;
using Properties = SoundOutput::Properties;
using Result = SoundOutput::Result;

namespace {

/// A sound server inside the test: it notes which sounds it was asked to play, and answers as told.
class Server {
public:
    SoundThread::MakeOutput output() {
        return [this] { return std::make_unique<Output>(*this); };
    }

    std::vector<Properties> asked() const { return locked(asked_); }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const Properties& properties : asked())
            names.push_back(properties.at("media.name"));
        return names;
    }
    int connections() const { return locked(connections_); }

    /// The result for the sound of that name; without one, it plays.
    void answer(const std::string& name, Result result) { answers_[name] = result; }

    void hang() { setHanging(true); }
    void goOn() { setHanging(false); }

    /// Ends the last sound that was asked for.
    void finish() { finished_(); }

private:
    class Output final : public SoundOutput {
    public:
        explicit Output(Server& server) : server_(server) { server_.connect(1); }
        ~Output() override { server_.connect(-1); }
        Result play(const Properties& properties, std::function<void()> finished) override {
            return server_.play(properties, std::move(finished));
        }

    private:
        Server& server_;
    };

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Properties> asked_;
    std::map<std::string, Result> answers_;
    std::function<void()> finished_;
    int connections_ = 0;
    bool hanging_ = false;

    template <class Value>
    Value locked(const Value& value) const {
        const std::lock_guard lock(mutex_);
        return value;
    }
    void connect(int change) {
        const std::lock_guard lock(mutex_);
        connections_ += change;
    }
    void setHanging(bool hanging) {
        const std::lock_guard lock(mutex_);
        hanging_ = hanging;
        changed_.notify_all();
    }
    Result play(const Properties& properties, std::function<void()> finished) {
        std::unique_lock lock(mutex_);
        asked_.push_back(properties);
        finished_ = std::move(finished);
        changed_.wait(lock, [this] { return !hanging_; });
        const auto answer = answers_.find(properties.at("media.name"));
        return answer == answers_.end() ? Result::Playing : answer->second;
    }
};

using Names = std::vector<std::string>;

class CanberraSoundsTest : public testing::Test {
protected:
    TemporaryFolder home;
    Server server;
    std::optional<CanberraSounds> sounds;

    CanberraSoundsTest() {
        for (const char* name : {"Glass", "Ping", "Pop"})
            write(home.path / (std::string(name) + ".wav"), name);
        sounds.emplace(home.path, server.output());
    }
    ~CanberraSoundsTest() override {
        server.goOn();
        sounds.reset();
        EXPECT_TRUE(isQuiet());
    }

    // Well below the time after which a sound that does not end is given up.
    static constexpr std::chrono::seconds limit{5};

    bool isAsked(const Names& names) {
        return waitUntil([&] { return server.names() == names; }, limit);
    }
    bool isQuiet() {
        return waitUntil([&] { return server.connections() == 0; }, limit);
    }
};

} // namespace

TEST_F(CanberraSoundsTest, TellsTheServerTheFileAndWhatItIs) {
    sounds->play("Glass");
    ASSERT_TRUE(isAsked({"Glass"}));
    EXPECT_EQ(server.asked().front(), (Properties{{"media.filename", (home.path / "Glass.wav").string()},
                                                  {"media.name", "Glass"},
                                                  {"media.role", "event"},
                                                  {"event.description", "Battery alert"},
                                                  {"canberra.cache-control", "never"}}));
}

TEST_F(CanberraSoundsTest, KnowsWhereItsSoundsAre) {
    EXPECT_EQ(sounds->file("Glass"), home.path / "Glass.wav");
    const CanberraSounds relative(fs::relative(home.path), server.output());
    ASSERT_TRUE(relative.file("Glass"));
    EXPECT_TRUE(relative.file("Glass")->is_absolute());
    EXPECT_TRUE(fs::equivalent(*relative.file("Glass"), home.path / "Glass.wav"));
}

TEST_F(CanberraSoundsTest, PlaysNothingThatIsNotOneOfItsNames) {
    fs::create_directory(home.path / "Folder.wav");
    fs::create_directory(home.path / "below");
    write(home.path / "below/Glass.wav", "other");
    write(home.path / ".wav", "nameless");
    write(home.path / "Two words.wav", "other");
    server.hang();
    sounds->play("Pop");
    ASSERT_TRUE(isAsked({"Pop"}));
    using namespace std::string_view_literals;
    for (const std::string_view name :
         {""sv, "."sv, ".."sv, "Unknown"sv, "glass"sv, "Glass.wav"sv, "Glass.wav\0"sv, "Glass\0"sv, "./Glass"sv,
          "below/Glass"sv, "below/../Glass"sv, "../Glass"sv, "/Glass"sv, "Folder"sv, "Two words"sv, "default"sv}) {
        EXPECT_FALSE(sounds->file(name)) << name;
        sounds->play(name); // would come next when the server goes on
    }
    server.goOn();
    server.finish();
    EXPECT_TRUE(isQuiet());
    EXPECT_EQ(server.names(), Names{"Pop"});
}

TEST_F(CanberraSoundsTest, PlaysTheMessageSoundOfTheTheme) {
    sounds->playDefault();
    ASSERT_TRUE(isAsked({"message"}));
    EXPECT_EQ(server.asked().front(), (Properties{{"event.id", "message"},
                                                  {"media.name", "message"},
                                                  {"media.role", "event"},
                                                  {"event.description", "Battery alert"},
                                                  {"canberra.cache-control", "never"}}));
    server.finish();
    EXPECT_TRUE(isQuiet());
    EXPECT_EQ(server.asked().size(), 1U);
}

TEST_F(CanberraSoundsTest, PlaysGlassWhereTheThemeHasNoMessageSound) {
    server.answer("message", Result::NotFound);
    sounds->playDefault();
    ASSERT_TRUE(isAsked({"message", "Glass"}));
    EXPECT_EQ(server.asked().back().at("media.filename"), home.path / "Glass.wav");
}

TEST_F(CanberraSoundsTest, IsSilentWithoutThemeAndGlass) {
    server.answer("message", Result::NotFound);
    fs::remove(home.path / "Glass.wav");
    sounds->playDefault();
    ASSERT_TRUE(isAsked({"message"}));
    EXPECT_TRUE(isQuiet());
    EXPECT_EQ(server.names(), Names{"message"});
}

TEST_F(CanberraSoundsTest, IsSilentWithoutAServerAndTriesAgainNextTime) {
    server.answer("message", Result::Failed);
    sounds->playDefault();
    ASSERT_TRUE(isAsked({"message"}));
    ASSERT_TRUE(isQuiet()); // and Glass was not asked for
    sounds->play("Ping");
    EXPECT_TRUE(isAsked({"message", "Ping"}));
}

TEST_F(CanberraSoundsTest, IsConnectedOnlyWhileASoundPlays) {
    EXPECT_EQ(server.connections(), 0);
    sounds->play("Glass");
    ASSERT_TRUE(isAsked({"Glass"}));
    EXPECT_EQ(server.connections(), 1);
    server.finish();
    EXPECT_TRUE(isQuiet());
}

TEST_F(CanberraSoundsTest, EndsASoundForALaterOneAndPlaysTheSameOneFromTheStart) {
    Names names;
    for (const char* name : {"Glass", "Ping", "Ping"}) {
        sounds->play(name);
        names.emplace_back(name);
        ASSERT_TRUE(isAsked(names));
        EXPECT_EQ(server.connections(), 1);
    }
}

TEST_F(CanberraSoundsTest, EndsTheSoundWithItself) {
    sounds->play("Glass");
    ASSERT_TRUE(isAsked({"Glass"}));
    sounds.reset();
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CanberraSoundsTest, WaitsForNoServerAndKeepsOnlyTheLatestOfMany) {
    server.hang();
    sounds->play("Glass");
    ASSERT_TRUE(isAsked({"Glass"}));
    for (int i = 0; i < 1000; ++i)
        sounds->play("Ping");
    sounds->play("Pop");
    server.goOn();
    EXPECT_TRUE(isAsked({"Glass", "Pop"}));
    server.finish();
    EXPECT_TRUE(isQuiet());
    EXPECT_EQ(server.names(), (Names{"Glass", "Pop"}));
}

TEST_F(CanberraSoundsTest, DoesNotKeepTheProgramForAServerThatHangs) {
    server.hang();
    sounds->play("Glass");
    ASSERT_TRUE(isAsked({"Glass"}));
    sounds->play("Ping");
    const auto start = std::chrono::steady_clock::now();
    sounds.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    server.goOn();
    EXPECT_TRUE(isQuiet());
    EXPECT_EQ(server.names(), Names{"Glass"});
}

namespace {

/// libcanberra itself, with a sound card that writes its samples into a file, and no themes but those of the test.
class CanberraOutputTest : public testing::Test {
protected:
    TemporaryFolder home;
    const fs::path card = home.path / "card";
    const std::string cardThatWrites =
        "pcm.!default { type file slave.pcm { type null } format raw file \"" + card.string() + "\" }\n";
    // libcanberra caches its look-ups for the life of the process; without a cache folder it looks again.
    Environment environment{{"CANBERRA_DRIVER", "alsa"},
                            {"CANBERRA_DEVICE", std::nullopt},
                            {"ALSA_CONFIG_PATH", home.path / "asound.conf"},
                            {"XDG_CACHE_HOME", "/dev/null/none"},
                            {"XDG_DATA_HOME", home.path / "data"},
                            {"XDG_DATA_DIRS", home.path / "none"}};

    void setCard(const std::string& configuration) { write(home.path / "asound.conf", configuration); }

    /// Returns libcanberra's answer; if the sound plays, only after its end.
    static Result played(const Properties& properties) {
        bool finished = false;
        std::mutex mutex;
        CanberraOutput output;
        const Result result = output.play(properties, [&] {
            const std::lock_guard lock(mutex);
            finished = true;
        });
        EXPECT_TRUE(result != Result::Playing || waitUntil([&] {
                        const std::lock_guard lock(mutex);
                        return finished;
                    }));
        return result;
    }

    /// The samples of one of our files.
    static std::string samplesOf(const std::string& name) {
        return contentOf(fs::path(VELMORA_SOUNDS) / (name + ".wav")).substr(44);
    }

    bool cardGot(const std::string& samples) {
        return waitUntil([&] { return contentOf(card) == samples; });
    }
};

} // namespace

TEST_F(CanberraOutputTest, BringsEverySampleToTheSoundCard) {
    setCard(cardThatWrites);
    CanberraSounds sounds(VELMORA_SOUNDS);
    for (const char* name : {"Pop", "Hero"}) {
        sounds.play(name);
        EXPECT_TRUE(cardGot(samplesOf(name))) << name;
    }
}

TEST_F(CanberraOutputTest, FindsTheMessageSoundOfTheTheme) {
    setCard(cardThatWrites);
    const fs::path theme = home.path / "data/sounds/freedesktop";
    fs::create_directories(theme / "stereo");
    write(theme / "index.theme", "[Sound Theme]\nName=Test\nDirectories=stereo\n\n[stereo]\nOutputProfile=stereo\n");
    fs::copy_file(fs::path(VELMORA_SOUNDS) / "Tink.wav", theme / "stereo/message.wav");
    CanberraSounds sounds(VELMORA_SOUNDS);
    sounds.playDefault();
    EXPECT_TRUE(cardGot(samplesOf("Tink")));
}

TEST_F(CanberraOutputTest, PlaysGlassWhereThereIsNoTheme) {
    setCard(cardThatWrites);
    CanberraSounds sounds(VELMORA_SOUNDS);
    sounds.playDefault();
    EXPECT_TRUE(cardGot(samplesOf("Glass")));
}

TEST_F(CanberraOutputTest, TellsWhatIsThereFromWhatIsNot) {
    setCard(cardThatWrites);
    const fs::path folder(VELMORA_SOUNDS);
    EXPECT_EQ(played({{"media.filename", folder / "Pop.wav"}}), Result::Playing);
    EXPECT_EQ(played({{"media.filename", folder / "Unknown.wav"}}), Result::NotFound);
    EXPECT_EQ(played({{"event.id", "message"}}), Result::NotFound);
    write(home.path / "Damaged.wav", "RIFF");
    EXPECT_EQ(played({{"media.filename", home.path / "Damaged.wav"}}), Result::Failed);
}

TEST_F(CanberraOutputTest, IsSilentWithoutASoundCardAlsoOnStandardError) {
    for (const char* configuration : {"pcm.!default { type hw card 31 }\n", "ctl.!default { type hw card 0 }\n", ""}) {
        setCard(configuration);
        const StandardError error;
        EXPECT_NE(played({{"media.filename", fs::path(VELMORA_SOUNDS) / "Pop.wav"}}), Result::Playing);
        EXPECT_EQ(error.text(), "") << configuration;
    }
}

TEST_F(CanberraOutputTest, IsSilentWithoutADriver) {
    const Environment other{{"CANBERRA_DRIVER", "no-such-driver"}};
    const StandardError error;
    EXPECT_EQ(played({{"media.filename", fs::path(VELMORA_SOUNDS) / "Pop.wav"}}), Result::Failed);
    EXPECT_EQ(error.text(), "");
}
