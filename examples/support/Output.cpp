// SPDX-License-Identifier: BSD-2-Clause
#include "Output.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace example {

CLI::Validator fileName() {
    const auto check = [](const std::string& name) -> std::string {
        const std::string last = std::filesystem::path(name).filename().string();
        const std::size_t dot = last.rfind('.'); // at the beginning too: ".png" is one to the library
        if (dot != std::string::npos && dot + 1 < last.size())
            return "";
        return "'" + name + "' has no extension, which would choose the format.";
    };
    return {check, ""};
}

void addForce(CLI::App& program, bool& force) {
    program.add_flag("--force", force, "Replace a file that exists without a question");
}

void requireReplaceable(const std::string& name, bool force) {
    std::error_code missing;
    // A device or a pipe loses nothing.
    if (force || !std::filesystem::is_regular_file(name, missing))
        return;
    if (!isatty(STDIN_FILENO))
        throw std::runtime_error(name + " exists. Say --force to replace it.");
    std::cerr << name << " exists. Replace it? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (answer.empty() || (answer[0] != 'y' && answer[0] != 'Y'))
        throw std::runtime_error(name + " stays as it is.");
}

void openOutput(Ko::VideoOutputVideoFile& sink, unsigned int width, unsigned int height, const std::string& name,
                Rate rate, unsigned int bitRate) {
    try {
        sink.open(width, height, name, rate, bitRate);
    } catch (const std::runtime_error& e) {
        const std::string reason = e.what();
        std::ostringstream sentence;
        if (reason.find("guess_format failed") != std::string::npos)
            sentence << "No container goes by the extension of " << name;
        else if (reason.find("avcodec_open failed") != std::string::npos)
            sentence << "The encoder for " << name << " does not take frames of " << width << "x" << height << ", "
                     << perSecond(rate) << " a second";
        else
            throw;
        throw std::runtime_error(sentence.str() + ". (" + reason + ")");
    }
}

} // namespace example
