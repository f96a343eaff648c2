// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "imagefile/Orientation.h"
#include "imagefile/StillFormats.h"
#include "util/Errors.h"

#include <locale>
#include <utility>

namespace Ko {

namespace {

const StillFormat* formatOfExtension(std::string extension) {
    for (char& c : extension)
        c = std::tolower(c, std::locale::classic());
    return findStillFormat(extension);
}

/// The format that the name's last dot announces, or null. Without a dot, substr() throws what callers get to see.
const StillFormat* formatOf(const std::string& name) {
    return formatOfExtension(name.substr(name.rfind('.')));
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

Orientation readOrientation(const std::string& name) {
    if (!formatOf(name))
        throwLogicError("readOrientation", "Cannot read " + name + ": extension not recognized.");
    return orientationIn(openFile("readOrientation", name).get());
}

Orientation readOrientation(const void* data, std::size_t size) {
    if (!findStillFormat(data, size))
        throwRuntimeError("readOrientation", "No known still.");
    return orientationIn(openMemory(data, size).get());
}

void readImage(Image<>& im, const void* data, std::size_t size) {
    const StillFormat* format = findStillFormat(data, size);
    if (!format)
        throwRuntimeError("readImage", "No known still.");
    format->decode(im, openMemory(data, size).get());
}

void writeImage(std::vector<unsigned char>& bytes, const Image<>& im, const std::string& extension) {
    const StillFormat* format = formatOfExtension(extension);
    if (!format)
        throwLogicError("writeImage", "Cannot write " + extension + ": extension not recognized.");
    std::vector<unsigned char> made;
    OutputFile file("writeImage", made);
    format->encode(file, im);
    bytes.swap(made);
}

} // namespace Ko
