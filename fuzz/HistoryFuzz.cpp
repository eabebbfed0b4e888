// SPDX-License-Identifier: GPL-3.0-or-later
#include "StrictHistory.h"
#include "Target.h"
#include "history/HistoryFile.h"
#include "history/HistoryStore.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

void checkThatItReadsBack(const SampleList& samples) {
    const std::optional<std::string> text = encodeHistory(samples);
    require(text.has_value(), "what was read can be written");
    require(decodeHistory(*text) == samples, "what was written reads back the same");
    require(strictlyDecoded(*text) == samples, "another parser reads it the same");
}

/// The samples that a program has after starting with the file, and what it makes of them.
void checkStore(const std::string& text, const SampleList& samples) {
    FakeFiles files;
    files.files[files.support / "Velmora/history.json"] = text;
    std::vector<Sample> sorted(samples.begin(), samples.end());
    std::ranges::stable_sort(sorted, {}, &Sample::t);
    const FakeClock clock(sorted.empty() ? Date() : sorted.front().date());
    const FakeCalendar calendar;
    HistoryStore store(files, clock, calendar);
    require(std::ranges::equal(store.samples, sorted), "all samples are loaded, oldest first");

    std::istringstream lines(store.csv());
    std::string line;
    std::getline(lines, line);
    for (const Sample& sample : sorted) {
        std::getline(lines, line);
        const std::string rest =
            "Z," + std::to_string(sample.p) + (sample.c ? ",true" : ",false") + (sample.a ? ",true" : ",false");
        require(line.ends_with(rest), "each sample is a line of the exported text");
    }
    require(!std::getline(lines, line), "the exported text ends with the last sample");
    if (sorted.empty())
        return;
    for (const Date now : {sorted.front().date(), sorted.back().date()}) {
        (void)store.pluggedSinceEstimate(now);
        for (const HistoryStore::DaySummary& day : store.dailySummaries(7, now)) {
            require(day.minPercent <= 100 && day.maxPercent >= 0, "the limits of a day are themselves limited");
            require(day.chargingMinutes >= 0, "nothing charges for less than no time");
        }
    }
    BatteryState state;
    state.hasBattery = true;
    store.record(state, sorted.back().date(), true);
    require(decodeHistory(files.files[files.support / "Velmora/history.json"]) == store.samples,
            "the file holds what the store holds");
}

} // namespace

std::optional<bool> isTaken(const std::string& text) {
    return decodeHistory(text).has_value();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const std::optional<SampleList> samples = decodeHistory(text);
    require(samples == strictlyDecoded(text), "another parser says the same");
    checkStore(text, samples.value_or(SampleList()));
    if (samples)
        checkThatItReadsBack(*samples);
    return 0;
}
