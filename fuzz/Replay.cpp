// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Feeds each file of the corpus, cut off at every byte, without the fuzzer. The name of a file says what is expected:
/// a file called good-... is read, one called bad-... is not.
int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "Usage: " << argv[0] << " FOLDER" << std::endl;
        return EXIT_FAILURE;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
        files.push_back(entry.path());
    std::ranges::sort(files);
    bool isRight = !files.empty();
    for (const auto& file : files) {
        const std::string name = file.filename().string();
        std::cout << name << std::endl; // now, in case that the next line does not come back
        std::ifstream stream(file, std::ios::binary);
        const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
        for (std::size_t length = 0; length <= bytes.size(); ++length)
            LLVMFuzzerTestOneInput(bytes.data(), length);
        const bool isRead = decodeHistory({bytes.begin(), bytes.end()}).has_value();
        if (!name.starts_with(isRead ? "good-" : "bad-")) {
            std::cout << "  was " << (isRead ? "read" : "not read") << std::endl;
            isRight = false;
        }
    }
    std::cout << files.size() << " files" << std::endl;
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
