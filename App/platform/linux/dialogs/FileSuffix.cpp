// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/FileSuffix.h"

std::string withSuffix(std::string file, std::string_view suffix) {
    const std::string_view name = std::string_view(file).substr(file.find_last_of('/') + 1);
    const auto point = name.find_last_of('.');
    const bool hasSuffix = point != std::string_view::npos && point > 0;
    if (!hasSuffix && !suffix.empty())
        file.append(".").append(suffix);
    return file;
}
