// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_STOREDPICTURE_H
#define KOVANTA_SRC_IMAGEFILE_STOREDPICTURE_H

#include "Kovanta/Image.h"

#include <cstddef>

namespace Ko {

/// A source image in the one-plane format of a file: the source itself where it has that format, else converted.
class StoredPicture {
public:
    /// @throws as convertIm()
    StoredPicture(const Image<>& source, PIXEL_FORMAT format);
    StoredPicture(const StoredPicture&) = delete;
    StoredPicture& operator=(const StoredPicture&) = delete;

    /// One pointer per row, for as long as the source lives. Libraries that only read want them non-const.
    unsigned char** rows() const { return picture->plane[0].view; }
    std::size_t rowBytes() const { return bytes; }

private:
    Image<> converted;
    const Image<>* picture;
    std::size_t bytes;
};

} // namespace Ko

#endif
