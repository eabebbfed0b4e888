// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/SampleList.h"

#include <algorithm>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

} // namespace

SampleList::SampleList(std::initializer_list<Sample> samples) {
    for (const Sample& sample : samples)
        push_back(sample);
}

std::size_t SampleList::firstNotBefore(Date date) const {
    const auto at = [this](std::size_t index) { return kept_.begin() + static_cast<std::ptrdiff_t>(index); };
    const auto isBefore = [date](const Packed& packed) { return !(Date(Duration(packed.t)) >= date); };
    const std::size_t ordered = std::max(ordered_, dropped_);
    auto found = std::partition_point(at(dropped_), at(ordered), isBefore);
    if (found == at(ordered))
        found = std::find_if_not(found, kept_.end(), isBefore);
    return static_cast<std::size_t>(found - at(dropped_));
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
    const bool isInOrder = ordered_ == kept_.size() && sample.t >= (kept_.empty() ? -infinity : kept_.back().t);
    kept_.push_back({sample.t, p << flags | (sample.c ? charging : 0) | (sample.a ? external : 0)});
    if (isInOrder)
        ordered_ = kept_.size();
}

void SampleList::dropFirst(std::size_t count) {
    dropped_ += count;
    // A full history drops a sample for each new one, and moving all others each time would cost more than all else
    // that happens in that minute.
    constexpr std::size_t fraction = 64;
    if (dropped_ <= size() / fraction)
        return;
    kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(dropped_));
    ordered_ -= std::min(ordered_, dropped_);
    dropped_ = 0;
    if (ordered_ > 0)
        return;
    const auto last =
        std::ranges::adjacent_find(kept_, [](const Packed& one, const Packed& other) { return !(one.t <= other.t); });
    ordered_ = static_cast<std::size_t>(last - kept_.begin()) + (last == kept_.end() ? 0 : 1);
}

void SampleList::clear() {
    *this = {};
}

void SampleList::sort() {
    std::stable_sort(kept_.begin() + static_cast<std::ptrdiff_t>(dropped_), kept_.end(),
                     [](const Packed& one, const Packed& other) { return one.t < other.t; });
    ordered_ = kept_.size();
}
