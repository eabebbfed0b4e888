// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/ReadDescriptor.h"

#include <unistd.h>

#include <array>
#include <cerrno>

std::optional<std::string> readDescriptor(int descriptor, std::size_t limit, std::size_t expected) {
    std::string content(expected, '\0');
    std::array<char, 4096> more; // uninitialised: this is read many times for a few bytes each
    std::size_t size = 0;
    for (;;) {
        const bool hasRoom = size < content.size();
        const ssize_t count = hasRoom ? ::read(descriptor, content.data() + size, content.size() - size)
                                      : ::read(descriptor, more.data(), more.size());
        if (count == 0) {
            content.resize(size);
            return content;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 || size + static_cast<std::size_t>(count) > limit)
            return std::nullopt;
        if (!hasRoom)
            content.append(more.data(), static_cast<std::size_t>(count));
        size += static_cast<std::size_t>(count);
    }
}
