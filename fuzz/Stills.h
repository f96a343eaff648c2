// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FUZZ_STILLS_H
#define KOVANTA_FUZZ_STILLS_H

#include "Choices.h"
#include "support/TestImages.h"

#include <cstdint>
#include <optional>
#include <string>

namespace fuzz {

/// What a file says of its picture, in numbers that cannot wrap.
struct Announced {
    std::uint64_t width;
    std::uint64_t height;
    std::uint64_t bytesPerPixel;

    /// Whether a reader has to refuse it as too large.
    bool tooLarge() const;
    /// Whether an image of that size is worth having in any format.
    bool holdable() const;
    /// Whether it fits but only costs time.
    bool tedious() const { return !tooLarge() && (width + 64) * height > std::uint64_t{1} << 18; }
};

/// Whether pictures that only take time are read too, for files that are known.
extern bool patient;

/// A reader and what its results are held against.
struct StillReader {
    void (*read)(test::Image&, const std::string&);
    std::optional<Announced> (*announced)(const std::string& bytes);
    /// The picture as the bare library has it, or nothing.
    std::optional<test::Image> (*decode)(const std::string& bytes);
};

/// Reads a file with those bytes into an owning image or one over foreign memory, whose format and size the choices
/// say, and holds the outcome against the bare library's.
void readStill(const StillReader& reader, const std::string& bytes, Choices choices);

} // namespace fuzz

#endif
