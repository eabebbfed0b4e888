// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/Sample.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <vector>

/// A list of samples that keeps each in 16 bytes, where a Sample takes 24: a month of them is what the program needs
/// most memory for. Its elements are read as values, and so cannot be changed in place.
class SampleList {
public:
    class Iterator {
    public:
        using value_type = Sample;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using reference = Sample;
        using pointer = void;

        Iterator() = default;
        Iterator(const SampleList& list, std::size_t index) : list_(&list), index_(index) {}

        Sample operator*() const { return (*list_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        Iterator operator++(int) { return {*list_, index_++}; }
        bool operator==(const Iterator&) const = default;

    private:
        const SampleList* list_ = nullptr;
        std::size_t index_ = 0;
    };

    /// A view of the samples from one on; valid until the list changes.
    class Tail {
    public:
        /// `first` is at most the size of the list.
        Tail(const SampleList& list, std::size_t first) : list_(&list), first_(first) {}

        bool empty() const { return size() == 0; }
        std::size_t size() const { return list_->size() - first_; }
        /// Counted from the first of these; below `size()`.
        Sample operator[](std::size_t index) const { return (*list_)[first_ + index]; }
        Iterator begin() const { return {*list_, first_}; }
        Iterator end() const { return list_->end(); }

    private:
        const SampleList* list_;
        std::size_t first_;
    };

    SampleList() = default;
    SampleList(std::initializer_list<Sample> samples);

    bool empty() const { return size() == 0; }
    std::size_t size() const { return kept_.size() - dropped_; }

    /// The sample with that number, which is below `size()`. The oldest has the number 0.
    Sample operator[](std::size_t index) const {
        const Packed& packed = kept_[dropped_ + index];
        const std::uint64_t p = packed.rest >> flags;
        return {.t = packed.t,
                .p = p < firstPlace ? static_cast<std::int64_t>(p) + least : large_[p - firstPlace],
                .c = (packed.rest & charging) != 0,
                .a = (packed.rest & external) != 0};
    }

    /// Of a list that is not empty.
    Sample front() const { return (*this)[0]; }
    Sample back() const { return (*this)[size() - 1]; }

    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }

    /// The number of the first sample at or after `date`; `size()` if there is none. A binary search, as far as
    /// the times ascend.
    std::size_t firstNotBefore(Date date) const;

    bool operator==(const SampleList& other) const;

    void push_back(const Sample& sample);

    /// Removes so many of the oldest, at most `size()`.
    void dropFirst(std::size_t count);

    void clear();

    /// Sorts by time, which is a number for each; samples of the same time stay in their order.
    void sort();

private:
    struct Packed {
        double t;
        std::uint64_t rest; ///< the percentage, or where it is, above two flags
    };
    static constexpr std::uint64_t charging = 1;
    static constexpr std::uint64_t external = 2;
    static constexpr int flags = 2;

    // A percentage is kept as its distance from the least that fits. Higher distances are places among the large ones.
    static constexpr std::int64_t most = std::int64_t{1} << 60;
    static constexpr std::int64_t least = -most;
    static constexpr std::uint64_t firstPlace = 2 * std::uint64_t{most} + 1;

    std::vector<Packed> kept_;
    std::size_t dropped_ = 0;         ///< from the front of `kept_`
    std::size_t ordered_ = 0;         ///< up to here in `kept_` the times ascend, from the first that is not dropped
    std::vector<std::int64_t> large_; ///< percentages for which `Packed` is too small; no battery reports such
};
