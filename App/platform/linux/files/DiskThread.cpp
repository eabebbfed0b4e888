// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/DiskThread.h"

#include <algorithm>
#include <system_error>

using namespace std::chrono_literals;

DiskThread::~DiskThread() {
    {
        const std::lock_guard hold(mutex_);
        ends_ = true;
    }
    changed_.notify_all();
    for (std::thread* thread : {&thread_, &hurriedThread_}) {
        if (thread->joinable())
            thread->join();
    }
}

void DiskThread::add(const std::string& name, Job job) {
    {
        const std::lock_guard hold(mutex_);
        lastJobs_.erase(name);
        std::erase_if(waiting_, [&name](const auto& waiting) { return waiting.first == name; });
        waiting_.emplace_back(name, std::make_shared<const Job>(std::move(job)));
        try {
            if (!thread_.joinable())
                thread_ = std::thread([this] { run(); });
        } catch (const std::system_error&) { // no more threads are allowed; the next job tries again
        }
    }
    changed_.notify_all();
}

void DiskThread::setLastJob(const std::string& name, Job job) {
    const std::lock_guard hold(mutex_);
    lastJobs_.insert_or_assign(name, std::move(job));
}

void DiskThread::doLastJobs() {
    std::map<std::string, Job> jobs;
    {
        const std::lock_guard hold(mutex_);
        jobs.swap(lastJobs_);
    }
    for (auto& [name, job] : jobs)
        add(name, std::move(job));
}

bool DiskThread::finish(std::chrono::milliseconds limit) {
    std::unique_lock hold(mutex_);
    isAwaited_ = true;
    changed_.notify_all();
    const auto isIdle = [this] { return waiting_.empty() && running_.second == nullptr; };
    if (!isOvertaken_ && changed_.wait_for(hold, limit, [&] { return isIdle() || isOvertaken_; }) && !isOvertaken_)
        return true;
    if (!isOvertaken_.exchange(true)) {
        std::vector<NamedJob> jobs;
        jobs.swap(waiting_);
        const auto isNewer = [this](const NamedJob& job) { return job.first == running_.first; };
        if (running_.second && std::ranges::none_of(jobs, isNewer))
            jobs.insert(jobs.begin(), running_);
        hurriedThread_ = std::thread([this, jobs = std::move(jobs)] { hurry(jobs); });
        changed_.notify_all();
    }
    changed_.wait_for(hold, 500ms, [this] { return hasHurried_; });
    return false;
}

void DiskThread::hurry(const std::vector<NamedJob>& jobs) {
    for (const auto& [name, job] : jobs)
        (*job)({.isHurried = true});
    const std::lock_guard hold(mutex_);
    hasHurried_ = true;
    changed_.notify_all();
}

void DiskThread::run() {
    std::unique_lock hold(mutex_);
    changed_.wait_until(hold, begin_, [this] { return ends_ || isAwaited_; });
    for (;;) {
        changed_.wait(hold, [this] { return ends_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        running_ = std::move(waiting_.front());
        waiting_.erase(waiting_.begin());
        hold.unlock();
        (*running_.second)({.isOvertaken = &isOvertaken_});
        hold.lock();
        running_ = {}; // whatever it held, the samples of a history for instance, is not needed any more
        changed_.notify_all();
    }
}
