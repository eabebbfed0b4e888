// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"

#include "history/HistoryCsv.h"
#include "history/HistoryFile.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr Duration longestHistory = 30 * 24h;
constexpr Duration longestWait = 300s; ///< for the next write while only the percentage changes
constexpr Duration staleHistory = 600s;

/// A clock under which the program has run for a day can be believed, also when that took several starts: it has left a
/// sample a minute in the last two weeks. A clock that makes most of a history too old is further ahead than these.
constexpr Duration recent = 14 * 24h;
constexpr std::ptrdiff_t enoughRecent = 24 * 60;

constexpr Duration longestGap = 900s; ///< between two samples of one plugged-in run

/// 30 days never fill this; a larger file is not a history.
constexpr std::size_t largestFile = std::size_t{64} << 20;

/// The file of an empty history.
constexpr std::string_view nothing = "[]";

} // namespace

std::filesystem::path HistoryStore::file(const Files& files) {
    return files.applicationSupportFolder() / "Velmora" / "history.json";
}

HistoryStore::HistoryStore(Files& files, const Clock& clock, const Calendar& calendar)
    : files_(files)
    , clock_(clock)
    , calendar_(calendar)
    , url(file(files))
    , clockTrust_(clock) {
    files_.createFolder(url.parent_path());
    hasClaim_ = files_.claim(url);
    fileChanges_ = files_.onChange(url, [this] { load(); });
    load();
}

void HistoryStore::claim() {
    if (!hasClaim_ && files_.claim(url)) { // the program that wrote the file has ended
        hasClaim_ = true;
        load();
    }
}

void HistoryStore::empty() {
    samples.clear();
    dropUnsaved(unsaved_.size());
}

void HistoryStore::dropUnsaved(std::size_t count) {
    unsaved_.erase(unsaved_.begin(), unsaved_.begin() + static_cast<std::ptrdiff_t>(count));
    dropped_ += count;
}

void HistoryStore::load() {
    auto taken = lifetime_.guard([this, number = ++loads_](std::optional<SampleList>&& loaded) {
        if (number == loads_)
            take(std::move(loaded));
    });
    files_.load(url, largestFile, [taken](std::optional<std::string> text) {
        const auto loaded = std::make_shared<std::optional<SampleList>>();
        if (text)
            *loaded = decodeHistory(std::move(*text));
        // Sorting allocates a copy even if nothing moves.
        if (*loaded && !std::ranges::is_sorted(**loaded, {}, &Sample::t))
            (*loaded)->sort();
        return [taken, loaded]() mutable { taken(std::move(*loaded)); };
    });
}

void HistoryStore::take(std::optional<SampleList> loaded) {
    const Date now = clock_.now();
    const bool isEmptied = loaded && loaded->empty();
    if (mayWrite_) {
        // Another program has changed the file. What it wrote is ours anyway, unless its user has reset the history.
        if (!isEmptied || samples.empty())
            return;
        empty();
    } else if (loaded) {
        // What the file does not have yet, the program that writes it will only write later, or has lost. Samples from
        // the future are left over from a clock that was ahead.
        double lastTime = 0;
        for (std::size_t i = loaded->size(); i-- > 0 && lastTime == 0;) {
            if (const Sample sample = (*loaded)[i]; sample.date() <= now)
                lastTime = sample.t;
        }
        const auto isKnown = [lastTime](const Sample& sample) { return sample.t <= lastTime; };
        const auto unknown = std::ranges::find_if_not(unsaved_, isKnown);
        dropUnsaved(isEmptied && isLoaded_ ? unsaved_.size() : static_cast<std::size_t>(unknown - unsaved_.begin()));
        std::ranges::for_each(unsaved_, [&loaded](const Sample& sample) { loaded->push_back(sample); });
        samples = std::move(*loaded);
    }
    isFileEmpty_ = !loaded || isEmptied;
    const bool takesOver = isLoaded_ && hasClaim_ && !mayWrite_;
    isLoaded_ = true;
    mayWrite_ = hasClaim_;
    const std::size_t outdated = samples.firstNotBefore(now - longestHistory);
    const auto isRecent = [now](const Sample& sample) { return sample.date() <= now && now - sample.date() < recent; };
    if (2 * outdated > samples.size() && std::ranges::count_if(samples, isRecent) < enoughRecent)
        clockTrust_.doubt();
    prune(now);
    if (takesOver)
        save(now);
    if (onReload)
        onReload();
}

void HistoryStore::record(const BatteryState& state, Date now, bool force) {
    if (!state.hasBattery)
        return;
    const Sample sample{
        .t = now.time_since_epoch().count(), .p = state.percent, .c = state.isCharging, .a = state.pluggedIn};
    const bool changed = !samples.empty() && (sample.a != samples.back().a || sample.c != samples.back().c);
    if (!samples.empty() && !changed && !force && sample.p == samples.back().p)
        return;
    claim();
    samples.push_back(sample);
    prune(now);
    unsaved_.push_back(sample);
    // If the last save lies ahead, the clock was ahead.
    if (changed || now - lastSave > longestWait || now < lastSave)
        save(now);
    else if (mayWrite_)
        saveAtEnd();
}

void HistoryStore::saveAtEnd() {
    if (saves_ != savesDone_) { // on a slow disk
        files_.updateAtEnd(url, 0, [all = samples](const auto&) { return encodeHistory(all); });
        return;
    }
    files_.updateAtEnd(url, largestFile, [unsaved = unsaved_](std::optional<std::string> text) {
        SampleList all;
        if (text)
            all = decodeHistory(std::move(*text)).value_or(all);
        for (const Sample& sample : unsaved)
            if (std::ranges::find(all, sample) == all.end())
                all.push_back(sample);
        return encodeHistory(all);
    });
}

std::optional<Date> HistoryStore::pluggedSinceEstimate(Date now) const {
    if (samples.empty() || !samples.back().a || now - samples.back().date() >= staleHistory)
        return std::nullopt;
    Date start = samples.back().date();
    for (std::size_t i = samples.size() - 1; i-- > 0;) {
        const Sample sample = samples[i];
        if (!sample.a || start - sample.date() > longestGap)
            break;
        start = sample.date();
    }
    return start;
}

std::string HistoryStore::csv() const {
    return historyCsv(samples);
}

void HistoryStore::save(Date now) {
    if (!isLoaded_)
        return;
    // Even if writing fails, so that a full disk is not tried again every minute.
    lastSave = now;
    claim();
    if (!mayWrite_)
        return;
    const auto sawReset = std::make_shared<bool>(false);
    // Encoded where the disk is written, because it takes a while; and the samples are a third as large as their text.
    auto change = [all = samples, isEmpty = isFileEmpty_, sawReset](const std::optional<std::string>& present) {
        *sawReset = present == nothing && !isEmpty; // by another program
        return *sawReset ? std::nullopt : encodeHistory(all);
    };
    files_.update(url, nothing.size(), std::move(change),
                  lifetime_.guard([this, sawReset, number = ++saves_, isEmpty = samples.empty(),
                                   count = dropped_ + unsaved_.size()](std::error_code error) {
                      savesDone_ = number;
                      if (*sawReset) {
                          isFileEmpty_ = true;
                          empty();
                          if (onReload)
                              onReload();
                      } else if (!error) {
                          isFileEmpty_ = isEmpty;
                          dropUnsaved(count > dropped_ ? count - dropped_ : 0);
                      }
                  }));
}

void HistoryStore::reset(Date now) {
    ++loads_; // what is being loaded is gone too
    const bool wasLoaded = std::exchange(isLoaded_, true);
    mayWrite_ = hasClaim_;
    lastSave = now;
    isFileEmpty_ = true;
    empty();
    files_.update(
        url, 0, [](const auto&) { return std::string(nothing); },
        lifetime_.guard([this, number = ++saves_](std::error_code) { savesDone_ = number; }));
    if (!wasLoaded && onReload)
        onReload();
}

void HistoryStore::prune(Date now) {
    if (clockTrust_.isGiven())
        samples.dropFirst(samples.firstNotBefore(now - longestHistory));
}
