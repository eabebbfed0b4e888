// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariant>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// The bytes of an input as a sequence of decisions; zeros once they have run out.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

    bool atEnd() const { return at_ == end_; }
    std::uint8_t next() { return atEnd() ? std::uint8_t{0} : *at_++; }
    int below(int limit) { return next() % limit; }
    bool flag() { return next() % 2 != 0; }
    std::uint64_t number();
    double fraction();

    /// A word that our code knows, or any other string that a message can hold.
    QString text();

private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

/// A value that a message can hold; and, if it is a colour, that colour.
struct AnyValue {
    QVariant value;
    std::optional<std::array<double, 3>> color;

    static AnyValue of(Bytes& bytes, int depth = 0);
};

/// Several such values.
QVariantList anyValues(Bytes& bytes);
