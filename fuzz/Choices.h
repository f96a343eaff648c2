// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FUZZ_CHOICES_H
#define KOVANTA_FUZZ_CHOICES_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

/// Draws what a target decides from the end of the input, so that its beginning stays the file that it is. An input
/// that is used up gives zeros.
class Choices {
public:
    Choices(const std::uint8_t* bytes, std::size_t size)
        : begin(bytes)
        , end(bytes + size) {}

    std::uint8_t byte() { return end > begin ? *--end : std::uint8_t{0}; }
    /// 0 .. limit - 1
    unsigned below(unsigned limit) { return limit <= 256 ? byte() % limit : word() % limit; }
    bool flip() { return (byte() & 1) != 0; }
    unsigned word() {
        const unsigned high = byte();
        return high << 8 | byte();
    }
    /// Mostly near 0, sometimes near the ends of its type.
    int coordinate() {
        const int small = static_cast<int>(word() % 256) - 100;
        switch (byte() % 8) {
        case 0:
            return static_cast<int>(0x7FFFFFFFu - (word() & 255));
        case 1:
            return static_cast<int>(0x80000000u + (word() & 255));
        case 2:
            return small * 1000;
        default:
            return small;
        }
    }
    bool done() const { return end == begin; }
    /// What is left, the file.
    std::size_t left() const { return static_cast<std::size_t>(end - begin); }

private:
    const std::uint8_t* begin;
    const std::uint8_t* end;
};

} // namespace fuzz

#endif
