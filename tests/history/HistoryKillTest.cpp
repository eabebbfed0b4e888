// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"
#include "platform/linux/files/PosixFiles.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <iterator>
#include <random>
#include <string>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

/// The number of saves, shared between two processes.
class SharedCount {
public:
    SharedCount() {
        void* const memory = ::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        count = memory == MAP_FAILED ? nullptr : new (memory) Count(0);
    }
    ~SharedCount() { ::munmap(count, sizeof(Count)); }
    SharedCount(const SharedCount&) = delete;
    SharedCount& operator=(const SharedCount&) = delete;

    using Count = std::atomic<int>;
    static_assert(Count::is_always_lock_free);
    Count* count;
};

class HistoryKill : public testing::Test {
protected:
    TemporaryFolder home;
    PosixFiles files{home.path};
    fs::path file = home.path / "Velmora/history.json";
    FakeClock clock;
    FakeCalendar calendar;
    SharedCount saves;

    /// The list of the nth save; two lists in a row differ in length, and the last sample of each holds its number.
    SampleList listOf(int number) const {
        const int length = number % 2 == 0 ? 1500 : 2000;
        const double start = clock.now().time_since_epoch().count() - 60.0 * length;
        SampleList samples;
        for (int i = 0; i < length; ++i)
            samples.push_back(
                {.t = start + 60 * i, .p = i + 1 < length ? i % 100 : number, .c = number % 2 == 0, .a = true});
        return samples;
    }

    /// Saves until it is killed.
    [[noreturn]] void saveOnAndOn(pid_t parent) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(EXIT_FAILURE);
        HistoryStore store(files, clock, calendar);
        for (;;) {
            store.samples = listOf(*saves.count + 1);
            store.save(clock.now());
            ++*saves.count;
        }
    }

    /// False when `condition` never holds.
    template <class Condition>
    static bool spinUntil(Condition condition) {
        const auto deadline = SteadyClock::now() + 40s;
        while (!condition() && SteadyClock::now() < deadline)
            ::sched_yield();
        return condition();
    }

    std::size_t entries() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()));
    }
};

} // namespace

TEST_F(HistoryKill, LeavesTheOldOrTheNewHistoryAndNothingElse) {
    constexpr int enoughSaves = 1000;
    constexpr int leastSaves = 50; // enough on a slow disk
    const auto deadline = SteadyClock::now() + 20s;
    ASSERT_NE(saves.count, nullptr);
    std::mt19937 random(1);
    {
        HistoryStore store(files, clock, calendar);
        store.samples = listOf(0);
        store.save(clock.now());
    }
    while (*saves.count < enoughSaves && (*saves.count < leastSaves || SteadyClock::now() < deadline)) {
        const int before = *saves.count;
        const int wanted = before + 1 + static_cast<int>(random() % 12);
        const auto start = SteadyClock::now();
        const pid_t parent = ::getpid();
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            saveOnAndOn(parent);
        const bool hasSaved = spinUntil([&] { return *saves.count >= wanted; });
        // The kill falls somewhere in the next save or two.
        const auto oneSave = (SteadyClock::now() - start) / (wanted - before);
        const auto moment = SteadyClock::now() + oneSave * static_cast<int>(random() % 1000) / 700;
        spinUntil([moment] { return SteadyClock::now() >= moment; });
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(hasSaved && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "status " << status;

        // As the program does at its next start.
        files.removeLeftovers(file);
        const HistoryStore store(files, clock, calendar);
        ASSERT_FALSE(store.samples.empty()) << "after " << *saves.count << " saves";
        const auto number = static_cast<int>(store.samples.back().p);
        ASSERT_TRUE(number == *saves.count || number == *saves.count + 1) << number << " after " << *saves.count;
        ASSERT_EQ(store.samples, listOf(number));
        ASSERT_EQ(entries(), 1U);
        *saves.count = number;
    }
}
