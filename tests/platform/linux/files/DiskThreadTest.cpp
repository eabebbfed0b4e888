// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/DiskThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

/// What happens on several threads, in its order.
class Journal {
public:
    void add(const std::string& entry) {
        const std::lock_guard hold(mutex_);
        entries_.push_back(entry);
    }
    std::vector<std::string> entries() {
        const std::lock_guard hold(mutex_);
        return entries_;
    }

private:
    std::mutex mutex_;
    std::vector<std::string> entries_;
};

using Entries = std::vector<std::string>;

class DiskThreadTest : public testing::Test {
protected:
    Journal journal;
    std::promise<void> gate; ///< the disk is stuck until it is opened
    std::shared_future<void> opened = gate.get_future().share();
    std::promise<void> reached; ///< the job that is stuck has begun
    std::unique_ptr<DiskThread> thread = std::make_unique<DiskThread>();

    DiskThread::Job noting(const std::string& entry) {
        return
            [this, entry](const DiskThread::Pace& pace) { journal.add(pace.isHurried ? entry + ", hurried" : entry); };
    }

    /// Adds a job that is stuck unless it is hurried, and waits until it has begun.
    void getStuck() {
        thread->add("stuck", [this](const DiskThread::Pace& pace) {
            if (!pace.isHurried) {
                reached.set_value();
                opened.wait();
            }
            noting(pace.isOvertaken != nullptr && *pace.isOvertaken ? "overtaken" : "done")(pace);
        });
        reached.get_future().wait();
    }
};

} // namespace

TEST_F(DiskThreadTest, DoesJobsInTheirOrder) {
    for (const char* name : {"a", "b", "c"})
        thread->add(name, noting(name));
    EXPECT_TRUE(thread->finish(10s));
    EXPECT_EQ(journal.entries(), (Entries{"a", "b", "c"}));
}

TEST_F(DiskThreadTest, DoesNothingBeforeItsRestIsOver) {
    const auto begin = std::chrono::steady_clock::now();
    thread = std::make_unique<DiskThread>(50ms);
    thread->add("a", [this](const DiskThread::Pace& /*pace*/) { reached.set_value(); });
    reached.get_future().wait();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 50ms);
}

TEST_F(DiskThreadTest, DoesNotRestWhenItIsWaitedFor) {
    thread = std::make_unique<DiskThread>(1h);
    thread->add("a", noting("a"));
    EXPECT_TRUE(thread->finish(1min));
    thread = std::make_unique<DiskThread>(1h);
    thread->add("b", noting("b"));
    thread.reset();
    EXPECT_EQ(journal.entries(), (Entries{"a", "b"}));
}

TEST_F(DiskThreadTest, DoesOnlyTheNewestOfAName) {
    getStuck();
    thread->add("a", noting("a1"));
    thread->add("b", noting("b1"));
    thread->add("a", noting("a2"));
    gate.set_value();
    EXPECT_TRUE(thread->finish(10s));
    EXPECT_EQ(journal.entries(), (Entries{"done", "b1", "a2"}));
}

TEST_F(DiskThreadTest, DoesWhatWaitsBeforeItEnds) {
    getStuck();
    thread->add("a", noting("a"));
    gate.set_value();
    thread.reset();
    EXPECT_EQ(journal.entries(), (Entries{"done", "a"}));
}

TEST_F(DiskThreadTest, DoesLastJobsOnlyWhenToldTo) {
    thread->setLastJob("a", noting("a1"));
    thread->setLastJob("a", noting("a2"));
    thread->setLastJob("b", noting("b1"));
    thread->add("b", noting("b2"));
    EXPECT_TRUE(thread->finish(10s));
    EXPECT_EQ(journal.entries(), (Entries{"b2"}));
    thread->doLastJobs();
    thread->doLastJobs();
    EXPECT_TRUE(thread->finish(10s));
    EXPECT_EQ(journal.entries(), (Entries{"b2", "a2"}));
}

TEST_F(DiskThreadTest, HurriesOnlyTheNewestOfAName) {
    getStuck();
    thread->add("a", noting("a"));
    thread->add("stuck", noting("newer"));
    EXPECT_FALSE(thread->finish(10ms));
    EXPECT_EQ(journal.entries(), (Entries{"a, hurried", "newer, hurried"}));
    gate.set_value();
}

TEST_F(DiskThreadTest, FinishesInAHurryWhenItIsStuck) {
    getStuck();
    thread->add("a", noting("a"));
    EXPECT_FALSE(thread->finish(10ms));
    EXPECT_EQ(journal.entries(), (Entries{"done, hurried", "a, hurried"}));
    EXPECT_FALSE(thread->finish(10ms)) << "only once";
    gate.set_value();
    thread.reset();
    EXPECT_EQ(journal.entries(), (Entries{"done, hurried", "a, hurried", "overtaken"}));
}
