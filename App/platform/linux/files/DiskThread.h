// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// A thread for what has to wait for a disk, which may be asleep or busy for many seconds. It does one job after the
/// other. All calls are for any thread.
class DiskThread {
public:
    /// How a job is to be done.
    struct Pace {
        bool isHurried = false;                         ///< the process is ending: nothing may be waited for
        const std::atomic<bool>* isOvertaken = nullptr; ///< becomes true when a hurried job has taken its place
    };
    using Job = std::function<void(const Pace&)>;

    /// It begins only after `rest`, unless it is waited for before.
    explicit DiskThread(std::chrono::milliseconds rest = {}) : begin_(std::chrono::steady_clock::now() + rest) {}
    DiskThread(const DiskThread&) = delete;
    DiskThread& operator=(const DiskThread&) = delete;

    /// Does what still waits, however long that takes.
    ~DiskThread();

    /// Has a job done after all that wait, in the place of one that waits under the same name.
    void add(const std::string& name, Job job);

    /// A job for `doLastJobs`, which the next `add` under its name makes unnecessary.
    void setLastJob(const std::string& name, Job job);

    /// Adds all last jobs.
    void doLastJobs();

    /// Waits up to `limit` until all jobs are done. After that they are done in a hurry by another thread, also the one
    /// that is stuck, with half a second to do it. False if it came to that: this thread may then still be stuck, so
    /// the process has to end without destroying anything.
    [[nodiscard]] bool finish(std::chrono::milliseconds limit);

private:
    using NamedJob = std::pair<std::string, std::shared_ptr<const Job>>;

    std::mutex mutex_; ///< for all that follows
    std::condition_variable changed_;
    std::vector<NamedJob> waiting_;
    std::map<std::string, Job> lastJobs_;
    NamedJob running_; ///< empty between two jobs
    const std::chrono::steady_clock::time_point begin_;
    bool ends_ = false;
    bool isAwaited_ = false;
    std::atomic<bool> isOvertaken_ = false;
    bool hasHurried_ = false;
    std::thread thread_; ///< started by the first job
    std::thread hurriedThread_;

    void run();
    void hurry(const std::vector<NamedJob>& jobs);
};
