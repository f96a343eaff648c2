// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_TESTIMAGES_H
#define KOVANTA_TESTS_SUPPORT_TESTIMAGES_H

#include "Kovanta/Image.h"
#include "Kovanta/Wrap.h"

#include <cstddef>
#include <string>
#include <vector>

namespace test {

using Image = Ko::Image<unsigned char>;

/// An image of random samples (the same for the same seed).
Image randomImage(Ko::PIXEL_FORMAT format, unsigned width, unsigned height, unsigned seed = 1);

/// Fills every sample of every plane.
void fill(Image& im, unsigned char value);

/// Gives a plane a view that begins at a sample and goes to the plane's end.
void beginAt(Ko::Array2D<unsigned char>& plane, unsigned x, unsigned y);

/// The rows of a plane, copied.
std::vector<std::vector<unsigned char>> samples(const Image& im, int plane);

/// In what a picture differs from the expected one: format, size or samples. Empty if in nothing.
std::string difference(const Image& im, const Image& expected);

/// The text of the exception of the given type that the call throws; another text when it throws none or another one.
/// New tests say EXPECT_THAT(call, testing::ThrowsMessage<Exception>(text)) instead.
template <class Exception, class Call>
std::string thrownText(Call&& call) {
    try {
        call();
    } catch (const Exception& e) {
        return e.what();
    } catch (const std::exception& e) {
        return std::string("another exception: ") + e.what();
    }
    return "nothing thrown";
}

/// A noalloc image whose rows have guard bytes on both sides.
struct WrappedImage {
    WrappedImage(Ko::PIXEL_FORMAT format, unsigned width, unsigned height, std::size_t offset = 0);
    /// Whether no write went past either end of any row.
    bool intact() const;

    struct Rows {
        std::size_t first, width, pitch;
        std::vector<unsigned char> bytes;
        unsigned char* row(std::size_t y) { return &bytes[y * pitch + first]; }
    };
    Image im;
    std::vector<Rows> memory; ///< Of all four planes; empty for one that the format lacks.
};

} // namespace test

#endif
