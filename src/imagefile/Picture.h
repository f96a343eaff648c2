#ifndef KOVANTA_SRC_IMAGEFILE_PICTURE_H
#define KOVANTA_SRC_IMAGEFILE_PICTURE_H

#include "Kovanta/Image.h"

#include <cstddef>
#include <cstdint>

namespace Ko {

/// Refuses a picture that the 32-bit sizes of an image cannot hold, before memory is taken for it.
/// @throws std::runtime_error "[function]: Image too large."
void requireFits(const char* function, std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel);

/// Hands a decoded picture over to the caller's image, which owns its pixels afterwards.
/// @throws std::logic_error of convertIm(); the image has its new size then
void deliver(Image<unsigned char>& destination, Image<unsigned char>&& picture);

/// A source image in the one-plane format of a file: the source itself where it has that format, else converted.
class StoredPicture {
public:
    /// @throws as convertIm()
    StoredPicture(const Image<unsigned char>& source, PIXEL_FORMAT format);
    StoredPicture(const StoredPicture&) = delete;
    StoredPicture& operator=(const StoredPicture&) = delete;

    /// One pointer per row, for as long as the source lives. Libraries that only read want them non-const.
    unsigned char** rows() const { return picture->plane[0].view; }
    std::size_t rowBytes() const { return bytes; }

private:
    Image<unsigned char> converted;
    const Image<unsigned char>* picture;
    std::size_t bytes;
};

} // namespace Ko

#endif
