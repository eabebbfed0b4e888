// SPDX-License-Identifier: GPL-3.0-or-later
#include "Target.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Feeds each file of the corpus without the fuzzer, whole and cut off at every byte; with the word "whole" only whole.
/// Where inputs can be refused, the name of a file says what is expected: good-... is accepted, bad-... is not.
int main(int argc, char** argv) {
    const bool onlyWhole = argc == 3 && std::string_view(argv[2]) == "whole";
    if (argc != 2 && !onlyWhole) {
        std::cerr << "Usage: " << argv[0] << " FOLDER [whole]" << std::endl;
        return EXIT_FAILURE;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
        files.push_back(entry.path());
    std::ranges::sort(files);
    bool isRight = !files.empty();
    for (const auto& file : files) {
        const std::string name = file.filename().string();
        std::cout << name << std::endl; // flushed, in case the next line never returns
        std::ifstream stream(file, std::ios::binary);
        const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
        for (std::size_t length = onlyWhole ? bytes.size() : 0; length <= bytes.size(); ++length)
            LLVMFuzzerTestOneInput(bytes.data(), length);
        const std::optional<bool> taken = isTaken({bytes.begin(), bytes.end()});
        if (taken && !name.starts_with(*taken ? "good-" : "bad-")) {
            std::cout << "  was " << (*taken ? "taken" : "turned away") << std::endl;
            isRight = false;
        }
    }
    std::cout << files.size() << " files" << std::endl;
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
