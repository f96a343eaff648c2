// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/PngObjects.h"

#include "util/Errors.h"

namespace Ko {

namespace {

png_structp createReader() {
    return png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
}

png_structp createWriter() {
    return png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
}

void destroyReader(png_structpp png, png_infopp info) {
    png_destroy_read_struct(png, info, nullptr);
}

} // namespace

const PngKind pngReading = {createReader, destroyReader, "readPngImage", "Error creating PNG read structure.",
                            "[readPngImage]: png_error called."};

// This text has no brackets; programs know it so.
const PngKind pngWriting = {createWriter, png_destroy_write_struct, "writePngImage",
                            "Error creating PNG write structure.", "writePngImage: png_error called."};

PngObject::PngObject(const PngKind& kind)
    : ofKind(kind)
    , png(kind.create()) {
    if (!png)
        throwRuntimeError(kind.function, kind.structureReason);
    info = png_create_info_struct(png);
    if (!info) {
        kind.destroy(&png, nullptr);
        throwRuntimeError(kind.function, "Error creating PNG info structure.");
    }
}

PngObject::~PngObject() {
    ofKind.destroy(&png, &info);
}

} // namespace Ko
