#include "imagefile/DeliverPicture.h"

#include "Kovanta/ConvertIm.h"

#include <utility>

namespace Ko {

void deliver(Image<>& destination, Image<>&& picture) {
    destination.size(picture.width, picture.height, true);
    if (destination.format == picture.format)
        destination = std::move(picture);
    else
        convertIm(destination, picture);
}

} // namespace Ko
