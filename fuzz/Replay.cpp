// SPDX-License-Identifier: BSD-2-Clause
// Runs a target over each file of its corpus: what the tests of every build do, where there is no fuzzer. --damage:
// also with every byte cut off or changed. --patient: also large pictures, and every destination that the last bytes
// choose.
#include "Stills.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

void run(const std::string& bytes) {
    // Of its exact size, so that sanitizers see what is read past the end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

void damage(const std::string& bytes) {
    // Small files whole, larger ones at every so many bytes.
    const std::size_t step = 1 + bytes.size() / 400;
    for (std::size_t i = 0; i < bytes.size(); i += step) {
        run(bytes.substr(0, i));
        for (const int bits : {0x01, 0x80, 0xFF}) {
            std::string changed = bytes;
            changed[i] = static_cast<char>(changed[i] ^ bits);
            run(changed);
        }
    }
}

void everyEnding(const std::string& bytes) {
    for (char last = 0; last < 8; ++last)
        for (const char* flips : {"\0\0", "\0\1", "\1\0", "\1\1"})
            run(bytes + flips[0] + flips[1] + last);
}

} // namespace

int main(int argc, char** argv) {
    bool damaged = false;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--damage")
            damaged = true;
        else if (std::string(argv[i]) == "--patient")
            fuzz::patient = true;
        else if (std::filesystem::is_directory(argv[i]))
            std::copy(std::filesystem::directory_iterator(argv[i]), {}, std::back_inserter(files));
        else
            files.emplace_back(argv[i]);
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fputs("usage: replay [--damage] [--patient] FILE|DIRECTORY...\n", stderr);
        return 1;
    }
    run("");
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(stream), {});
        std::printf("%s, %zu bytes\n", file.filename().c_str(), bytes.size());
        std::fflush(stdout);
        run(bytes);
        if (fuzz::patient)
            everyEnding(bytes);
        if (damaged) {
            const bool before = std::exchange(fuzz::patient, false); // a changed size only takes time
            damage(bytes);
            fuzz::patient = before;
        }
    }
    return 0;
}
