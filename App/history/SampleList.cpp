// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/SampleList.h"

#include <algorithm>

SampleList::SampleList(std::initializer_list<Sample> samples) {
    for (const Sample& sample : samples)
        push_back(sample);
}

std::size_t SampleList::firstNotBefore(Date date) const {
    const auto first = kept_.begin() + static_cast<std::ptrdiff_t>(dropped_);
    return static_cast<std::size_t>(
        std::find_if(first, kept_.end(), [date](const Packed& packed) { return Date(Duration(packed.t)) >= date; }) -
        first);
}

bool SampleList::operator==(const SampleList& other) const {
    return std::ranges::equal(*this, other);
}

void SampleList::push_back(const Sample& sample) {
    std::uint64_t p = firstPlace + large_.size();
    if (sample.p >= least && sample.p <= most)
        p = static_cast<std::uint64_t>(sample.p - least);
    else
        large_.push_back(sample.p);
    kept_.push_back({sample.t, p << flags | (sample.c ? charging : 0) | (sample.a ? external : 0)});
}

void SampleList::dropFirst(std::size_t count) {
    dropped_ += count;
    // A full history drops a sample for each new one, and moving all others each time would cost more than all else
    // that happens in that minute.
    constexpr std::size_t fraction = 64;
    if (dropped_ <= size() / fraction)
        return;
    kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(dropped_));
    dropped_ = 0;
}

void SampleList::clear() {
    *this = {};
}

void SampleList::sort() {
    std::stable_sort(kept_.begin() + static_cast<std::ptrdiff_t>(dropped_), kept_.end(),
                     [](const Packed& one, const Packed& other) { return one.t < other.t; });
}
