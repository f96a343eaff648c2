// SPDX-License-Identifier: BSD-2-Clause
#include "Stills.h"

#include "Checks.h"
#include "Kovanta/ImageFile.h"
#include "support/ConversionOracle.h"
#include "support/MemoryFile.h"

#include <new>
#include <stdexcept>

namespace fuzz {

namespace {

constexpr Ko::PIXEL_FORMAT formats[] = {Ko::PF_YCC444P, Ko::PF_RGB,     Ko::PF_Y,   Ko::PF_JFIF,
                                        Ko::PF_RGBA,    Ko::PF_YCC420P, Ko::PF_BGR, Ko::PF_YCCA4444P};

/// An image that is to be read into, over memory of its own or with guards around foreign rows.
class Destination {
public:
    Destination(Choices& choices, const std::optional<Announced>& announced)
        : format(formats[choices.below(std::size(formats))])
        , wraps(choices.flip())
        , fits(choices.flip() && announced && announced->holdable())
        , width(fits ? static_cast<unsigned>(announced->width) : 2)
        , height(fits ? static_cast<unsigned>(announced->height) : 3)
        , wrapped(format, wraps ? width : 0, wraps ? height : 0)
        , owning(format) {
        if (!wraps)
            owning = test::randomImage(format, width, height);
    }

    test::Image& image() { return wraps ? wrapped.im : owning; }
    bool intact() const { return wrapped.intact(); }

    const Ko::PIXEL_FORMAT format;
    const bool wraps;
    const bool fits;

private:
    const unsigned width;
    const unsigned height;
    test::WrappedImage wrapped;
    test::Image owning;
};

/// Whatever the bytes are, they say one of eight ways, or nothing.
void tryOrientation(const std::string& bytes) {
    const AllocationLimit limit(std::size_t{1} << 20);
    try {
        const Ko::Orientation orientation = Ko::readOrientation(bytes.data(), bytes.size());
        require(orientation >= Ko::OR_UPRIGHT && orientation <= Ko::OR_ROTATED_270, "no orientation");
    } catch (const std::runtime_error&) { // no known still
    }
}

} // namespace

bool patient = false;

bool Announced::tooLarge() const {
    constexpr std::uint64_t most = 0xFFFFFFFFu;
    return height > std::uint64_t{1} << 28 || width * bytesPerPixel > most || width * bytesPerPixel * height > most;
}

bool Announced::holdable() const {
    constexpr std::uint64_t most = std::uint64_t{1} << 24;
    return width <= most && height <= most && width * height <= most;
}

void readStill(const StillReader& reader, const std::string& bytes, Choices choices) {
    tryOrientation(bytes);
    const std::optional<Announced> announced = reader.announced(bytes);
    if (announced && announced->tedious() && !patient)
        return;
    static test::MemoryFile file;
    file.hold(bytes);
    Destination destination(choices, announced);
    test::Image& im = destination.image();
    const test::Image before = im;
    bool read = false;
    bool converted = true;
    bool tooLargeConverted = false;
    {
        const DescriptorWatch descriptors;
        const AllocationLimit limit(std::size_t{1} << (patient ? 30 : 26));
        try {
            reader.read(im, file.path());
            read = true;
        } catch (const std::logic_error&) {
            read = true; // as far as the file goes
            converted = false;
        } catch (const std::bad_alloc&) {
            fail("a small picture takes much memory");
        } catch (const std::exception& e) {
            // By the reader itself: further in, memory may have been taken already. A picture that fits as it is may
            // still be too large in the destination's format.
            const std::string text = e.what();
            tooLargeConverted = text.find("Image too large.") != std::string::npos && text.compare(0, 5, "[read") != 0;
            require(!tooLargeConverted || (announced && !announced->tooLarge()), "a size was refused too late");
        }
    }
    require(destination.intact(), "written past the rows of a wrapped image");
    if (!read)
        requireSame(im, before, "a refused file changed the image");
    if (tooLargeConverted)
        return;
    if (announced && announced->tooLarge()) {
        require(!read, "a picture that is too large was read");
        return;
    }
    const std::optional<test::Image> decoded = reader.decode(bytes);
    require(decoded.has_value() == read,
            read ? "read, although the bare library refuses it" : "refused, although the bare library reads it");
    if (!decoded)
        return;
    std::optional<test::Image> expected;
    try {
        expected = test::inFormat(destination.format, *decoded);
    } catch (const std::exception&) { // there is no conversion for this pair
    }
    if (converted) {
        if (destination.wraps && !destination.fits && !im.plane[0].alloc)
            return; // foreign memory that holds a part of the picture
        require(expected.has_value(), "converted where no conversion is");
        requireSame(im, *expected, "another picture than the file's");
    } else {
        // Formats that do not convert, and foreign memory of another size.
        require(!expected || (destination.wraps && !destination.fits), "a conversion was refused");
    }
}

} // namespace fuzz
