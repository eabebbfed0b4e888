// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ReadDescriptor.h"

#include <unistd.h>

#include <array>
#include <cerrno>

std::optional<std::string> readDescriptor(int descriptor, std::size_t limit, std::size_t expected) {
    std::string content;
    content.reserve(expected);
    std::array<char, 4096> block{};
    for (;;) {
        const ssize_t count = ::read(descriptor, block.data(), block.size());
        if (count == 0)
            return content;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 || content.size() + static_cast<std::size_t>(count) > limit)
            return std::nullopt;
        content.append(block.data(), static_cast<std::size_t>(count));
    }
}
