// SPDX-License-Identifier: BSD-2-Clause
#include "Stills.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace example {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes the number that begins at @p place, without leading zeros.
std::string takeNumber(const std::string& name, std::size_t& place) {
    while (place + 1 < name.size() && name[place] == '0' && isDigit(name[place + 1]))
        ++place;
    const std::size_t begin = place;
    while (place < name.size() && isDigit(name[place]))
        ++place;
    return name.substr(begin, place - begin);
}

bool naturallyBefore(const std::string& left, const std::string& right) {
    std::size_t l = 0;
    std::size_t r = 0;
    while (l < left.size() && r < right.size()) {
        if (isDigit(left[l]) && isDigit(right[r])) {
            const std::string first = takeNumber(left, l);
            const std::string second = takeNumber(right, r);
            if (first != second)
                return first.size() != second.size() ? first.size() < second.size() : first < second;
        } else if (left[l] != right[r]) {
            return static_cast<unsigned char>(left[l]) < static_cast<unsigned char>(right[r]);
        } else {
            ++l;
            ++r;
        }
    }
    const bool leftEnds = l == left.size();
    return leftEnds != (r == right.size()) ? leftEnds : left < right;
}

} // namespace

bool isStill(const std::string& name) {
    std::string extension = name.substr(std::min(name.rfind('.'), name.size()));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const char* const known : {".jpg", ".jpeg", ".png", ".ppm", ".pgm"})
        if (extension == known)
            return true;
    return false;
}

std::vector<std::string> listStills(const std::string& directory, bool natural) {
    std::error_code missing;
    if (!std::filesystem::is_directory(directory, missing))
        throw std::runtime_error("There is no directory " + directory + ".");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        if (entry.is_regular_file() && isStill(entry.path().string()))
            names.push_back(entry.path().string());
    if (names.empty())
        throw std::runtime_error("There are no stills in " + directory + ".");
    if (natural)
        std::sort(names.begin(), names.end(), naturallyBefore);
    else
        std::sort(names.begin(), names.end());
    return names;
}

} // namespace example
