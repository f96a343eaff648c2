// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "imagefile/StillFormats.h"
#include "util/Errors.h"

#include <locale>

namespace Ko {

namespace {

/// The format that the name's last dot announces, or null. Without a dot, substr() throws what callers get to see.
const StillFormat* formatOf(const std::string& name) {
    std::string extension = name.substr(name.rfind('.'));
    for (char& c : extension)
        c = std::tolower(c, std::locale::classic());
    return findStillFormat(extension);
}

} // namespace

void readImage(Image<>& im, const std::string& name) {
    const StillFormat* format = formatOf(name);
    if (!format)
        throwLogicError("readImage", "Cannot read " + name + ": extension not recognized.");
    format->read(im, name);
}

void writeImage(const std::string& name, const Image<>& im) {
    const StillFormat* format = formatOf(name);
    if (!format)
        throwLogicError("writeImage", "Cannot write " + name + ": extension not recognized.");
    format->write(name, im);
}

} // namespace Ko
