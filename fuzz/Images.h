// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FUZZ_IMAGES_H
#define KOVANTA_FUZZ_IMAGES_H

#include "Choices.h"
#include "support/TestImages.h"

#include <vector>

namespace fuzz {

/// An image of any format and small size: over its own memory or over guarded foreign rows; perhaps with a view that
/// begins inside, with a description that claims more than the planes hold, or with a plane of another size.
class AnyImage {
public:
    explicit AnyImage(Choices& choices);

    test::Image& image() { return wraps ? wrapped.im : owning; }
    /// Whether it is what its format and size say, over all of its planes.
    bool plain() const { return honest; }
    bool ownsPixels() const { return !wraps; }
    bool intact() const { return wrapped.intact(); }
    /// Whether all samples are still those that it was made with, for one that is only read.
    bool unchanged() { return contents() == made; }

private:
    void disturb(Choices& choices);
    std::vector<unsigned char> contents();

    Ko::PIXEL_FORMAT format;
    unsigned width;
    unsigned height;
    bool wraps;
    bool honest = true;
    test::WrappedImage wrapped;
    test::Image owning;
    std::vector<unsigned char> made;
};

} // namespace fuzz

#endif
