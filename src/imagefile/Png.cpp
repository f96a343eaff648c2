// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "imagefile/DeliverPicture.h"
#include "imagefile/File.h"
#include "imagefile/PictureLimit.h"
#include "imagefile/PngObjects.h"
#include "imagefile/StillFormats.h"
#include "imagefile/StoredPicture.h"
#include "util/Errors.h"

#include <iostream>
#include <optional>
#include <utility>

namespace Ko {

namespace {

struct PngHeader {
    png_uint_32 width;
    png_uint_32 height;
    int bitDepth;
    int colorType;
    int interlace;
    bool transparency;
};

/// How a kind of PNG becomes an image of ours.
struct PngDecoding {
    PIXEL_FORMAT format;
    bool expandPalette;
    bool expandGrey;
    bool stripAlpha;
};

PngDecoding chooseDecoding(const PngHeader& header) {
    PngDecoding decoding{PF_UNKNOWN, header.colorType == PNG_COLOR_TYPE_PALETTE, false, false};
    const int kind = header.colorType & ~PNG_COLOR_MASK_PALETTE;
    decoding.expandGrey = kind == PNG_COLOR_TYPE_GRAY && header.bitDepth < 8;
    switch (kind) {
    case PNG_COLOR_TYPE_GRAY:
        decoding.format = PF_Y;
        break;
    case PNG_COLOR_TYPE_RGB:
        decoding.format = PF_RGB;
        // libpng expands a palette's transparency along with its colours.
        decoding.stripAlpha = decoding.expandPalette && header.transparency;
        break;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        decoding.format = PF_Y;
        decoding.stripAlpha = true;
        break;
    case PNG_COLOR_TYPE_RGB_ALPHA:
        decoding.format = PF_RGBA;
        break;
    default:
        throwRuntimeError("readPngImage", "Do not know how to decode this PNG.");
    }
    return decoding;
}

// A failed write is left for OutputFile::close() to tell.
void writeBytes(png_structp png, png_bytep bytes, png_size_t size) {
    static_cast<OutputFile*>(png_get_io_ptr(png))->write(bytes, size);
}

void flushBytes(png_structp png) {
    static_cast<OutputFile*>(png_get_io_ptr(png))->flush();
}

/// @param level of compression; without one, libpng's own
void encode(OutputFile& file, const Image<>& im, std::optional<int> level) {
    OutputFile* const target = &file;
    const png_uint_32 width = im.width;
    const png_uint_32 height = im.height;
    PngObject writer(pngWriting);
    writer.run([=](png_structp png, png_infop info) {
        png_set_write_fn(png, target, writeBytes, flushBytes);
        if (level)
            png_set_compression_level(png, *level);
        png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                     PNG_FILTER_TYPE_BASE);
    });
    const StoredPicture picture(im, PF_RGB);
    png_bytepp const rows = picture.rows();
    // Everything that can be refused has been; what the name held may go.
    file.truncate();
    writer.run([=](png_structp png, png_infop info) {
        png_write_info(png, info);
        png_write_image(png, rows);
        png_write_end(png, info);
    });
    file.close();
}

} // namespace

void encodePng(OutputFile& file, const Image<>& im) {
    encode(file, im, std::nullopt);
}

void writePngImage(const std::string& name, const Image<>& im) {
    OutputFile file(pngWriting.function, name);
    encodePng(file, im);
}

void writePngImage(const std::string& name, const Image<>& im, unsigned int level) {
    if (level > 9)
        throwLogicError(pngWriting.function, "Level must be 0 to 9.");
    OutputFile file(pngWriting.function, name);
    encode(file, im, static_cast<int>(level));
}

void readPngImage(Image<>& im, const std::string& name) {
    decodePng(im, openFile(pngReading.function, name).get());
}

void decodePng(Image<>& im, std::FILE* file) {
    const char* const function = pngReading.function;
    PngObject reader(pngReading);
    PngHeader header{};
    reader.run([file, &header](png_structp png, png_infop info) {
        png_init_io(png, file);
        // Texts, profiles and whatever else does not make pixels is skipped unread: it could take gigabytes.
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_read_info(png, info);
        png_set_sig_bytes(png, 0);
        png_get_IHDR(png, info, &header.width, &header.height, &header.bitDepth, &header.colorType, &header.interlace,
                     nullptr, nullptr);
        header.transparency = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    });

    const PngDecoding decoding = chooseDecoding(header);
    Image<> picture(decoding.format);
    requireFits(function, header.width, header.height, picture.bytesPerPixelNum);
    if (header.colorType == PNG_COLOR_TYPE_GRAY_ALPHA)
        std::cout << errorText(function,
                               "Grayscale plus alpha is currently not supported, removing alpha channel.\n") // at once
                  << std::flush;
    std::size_t rowBytes = 0;
    reader.run([decoding, &rowBytes](png_structp png, png_infop info) {
        png_set_strip_16(png);
        png_set_packing(png);
        if (decoding.expandPalette)
            png_set_palette_to_rgb(png);
        if (decoding.expandGrey)
            png_set_expand_gray_1_2_4_to_8(png);
        if (decoding.stripAlpha)
            png_set_strip_alpha(png);
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
        rowBytes = png_get_rowbytes(png, info);
    });
    picture.size(header.width, header.height, true);
    if (rowBytes != picture.plane[0].width) // whatever libpng makes of the requests, rows must hold it
        throwRuntimeError(function, "Do not know how to decode this PNG.");

    png_bytepp const rows = picture.plane[0].view;
    reader.run([rows](png_structp png, png_infop info) {
        png_read_image(png, rows);
        png_read_end(png, info);
    });
    deliver(im, std::move(picture));
}

} // namespace Ko
