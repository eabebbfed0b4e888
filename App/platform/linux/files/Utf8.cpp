// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/Utf8.h"

#include <cstddef>
#include <cstdint>

bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xC2 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF5 ? 4
                                                 : 0;
        if (length == 0 || text.size() - i < length)
            return false;
        std::uint32_t code = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0U) != 0x80U)
                return false;
            code = (code << 6U) | (next & 0x3FU);
        }
        const bool tooLong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        if (tooLong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
            return false;
        i += length;
    }
    return true;
}
