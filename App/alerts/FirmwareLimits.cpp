// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/FirmwareLimits.h"

#include "platform/Files.h"

#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace {

constexpr std::size_t largestFile = std::size_t{64} << 10;

} // namespace

std::filesystem::path FirmwareLimits::file(const Files& files) {
    return files.stateFolder() / "Velmora" / "charge-limits";
}

FirmwareLimits::FirmwareLimits(Files& files) : files_(files) {
    files_.load(file(files_), largestFile, [taken = lifetime_.guard([this](const std::string& text) {
                    isLoaded_ = true;
                    watch_.memory = LimitMemory::decode(text);
                    if (onLoad)
                        onLoad();
                })](std::optional<std::string> text) {
        return [taken, content = std::move(text).value_or("")]() mutable { taken(content); };
    });
}

LimitWatch::Outcome FirmwareLimits::run(const std::vector<PackLimit>& packs, bool pluggedIn, Duration uptime,
                                        bool canDeliver, bool prime) {
    const LimitMemory before = watch_.memory;
    LimitWatch::Outcome outcome = watch_.run(packs, pluggedIn, uptime, canDeliver, prime);
    if (watch_.memory == before && !mustWrite_)
        return outcome;
    mustWrite_ = false;
    files_.update(
        file(files_), 0, [text = watch_.memory.encoded()](const auto&) { return text; },
        lifetime_.guard([this](std::error_code error) { mustWrite_ = static_cast<bool>(error); }));
    return outcome;
}
