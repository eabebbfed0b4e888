// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/BackgroundFiles.h"

#include <memory>

void BackgroundFiles::load(const Path& file, std::size_t limit,
                           std::function<Task(std::optional<std::string> content)> decode) {
    thread_.add("load " + file.native(), [=, this, decode = std::move(decode)](const DiskThread::Pace& pace) {
        if (!pace.isHurried)
            loop_.async(decode(disk_.read(file, limit)));
    });
}

DiskThread::Job BackgroundFiles::updating(const Path& file, std::size_t limit, Change change, Done done) {
    return [=, this, change = std::move(change), done = std::move(done)](const DiskThread::Pace& pace) {
        const std::error_code error =
            disk_.change(file, limit, change, pace.isHurried ? Sync::skip : Sync::wait, pace.isOvertaken);
        if (done && !pace.isHurried)
            loop_.async([done, error] { done(error); });
    };
}

void BackgroundFiles::update(const Path& file, std::size_t limit, Change change, Done done) {
    thread_.add(file.native(), updating(file, limit, std::move(change), std::move(done)));
}

void BackgroundFiles::updateAtEnd(const Path& file, std::size_t limit, Change change) {
    thread_.setLastJob(file.native(), updating(file, limit, std::move(change), {}));
}

std::error_code BackgroundFiles::replaceNow(const Path& file, std::string_view content) {
    const std::error_code error = disk_.replaceNow(file, content);
    thread_.add("sync " + file.native(), [=, this](const DiskThread::Pace& pace) {
        if (!pace.isHurried)
            disk_.sync(file);
    });
    return error;
}

void BackgroundFiles::removeLeftovers(const Path& file) {
    thread_.add("leftovers of " + file.native(), [=, this](const DiskThread::Pace& pace) {
        if (!pace.isHurried)
            disk_.removeLeftovers(file);
    });
}

void BackgroundFiles::afterUpdates(Duration limit, Task task) {
    const auto shared = std::make_shared<Task>(std::move(task));
    const auto runOnce = [shared] {
        if (const Task once = std::exchange(*shared, nullptr))
            once();
    };
    thread_.add("after " + std::to_string(++awaited_), [this, runOnce](const DiskThread::Pace& pace) {
        if (!pace.isHurried)
            loop_.async(runOnce);
    });
    loop_.after(limit, runOnce);
}
