// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/DeliverPicture.h"

#include "Kovanta/ConvertIm.h"
#include "image/ArrayStorage.h"
#include "image/ImageLayout.h"

namespace Ko {

void deliver(Image<>& destination, Image<>&& picture) {
    if (destination.format == picture.format) {
        // The planes change hands: a second buffer of the size would only be thrown away.
        for (int p = 0; p < ImageLayout::planeCount; ++p)
            exchange(destination.plane[p], picture.plane[p]);
        ImageLayout::copyDescription(destination, picture);
        return;
    }
    destination.size(picture.width, picture.height, true);
    convertIm(destination, picture);
}

} // namespace Ko
