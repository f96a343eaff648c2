// SPDX-License-Identifier: BSD-2-Clause
#include "BareLibraries.h"

#include "support/TestImages.h"

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
#include <png.h>

#include <csetjmp>

namespace fuzz {

using test::Image;

namespace {

// The jumps pass only this function and decodeInto(), which hold nothing to destroy.
bool readUntransformed(png_structp png, png_infop info) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    return true;
}

/// Sample i of a row; of 16-bit samples the high byte.
unsigned sampleAt(const unsigned char* row, std::size_t i, unsigned depth) {
    if (depth >= 8)
        return row[i * (depth / 8)];
    const std::size_t perByte = 8 / depth;
    const std::size_t shift = 8 - depth - i % perByte * depth;
    return static_cast<unsigned>(row[i / perByte] >> shift) & ((1u << depth) - 1);
}

Image fromRows(png_structp png, png_infop info) {
    const unsigned width = png_get_image_width(png, info);
    const unsigned height = png_get_image_height(png, info);
    const unsigned depth = png_get_bit_depth(png, info);
    const bool indexed = png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE;
    png_colorp palette = nullptr;
    int colors = 0;
    if (indexed)
        png_get_PLTE(png, info, &palette, &colors);
    const unsigned inFile = png_get_channels(png, info);
    const unsigned kept = indexed ? 3 : inFile == 2 ? 1 : inFile;
    Image im(kept == 1 ? Ko::PF_Y : kept == 3 ? Ko::PF_RGB : Ko::PF_RGBA);
    im.size(width, height);
    png_bytepp rows = png_get_rows(png, info);
    for (unsigned y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x)
            for (unsigned c = 0; c < kept; ++c) {
                unsigned value = sampleAt(rows[y], x * inFile + (indexed ? 0 : c), depth);
                if (indexed) {
                    const png_color color = value < static_cast<unsigned>(colors) ? palette[value] : png_color{0, 0, 0};
                    value = c == 0 ? color.red : c == 1 ? color.green : color.blue;
                } else if (depth < 8) {
                    value = value * 255 / ((1u << depth) - 1);
                }
                im.plane[0].view[y][x * kept + c] = static_cast<unsigned char>(value);
            }
    return im;
}

struct Jump {
    jpeg_error_mgr manager;
    std::jmp_buf target;
};

bool decodeInto(Image& im, jpeg_decompress_struct& jpeg, Jump& jump, const std::string& bytes) {
    if (setjmp(jump.target) != 0)
        return false;
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = jpeg.jpeg_color_space;
    jpeg_start_decompress(&jpeg);
    if (jpeg.out_color_space != JCS_GRAYSCALE && jpeg.out_color_space != JCS_YCbCr)
        return false;
    im.fmt(jpeg.out_color_space == JCS_GRAYSCALE ? Ko::PF_Y : Ko::PF_JFIF);
    im.size(jpeg.output_width, jpeg.output_height);
    JSAMPARRAY rows = im.plane[0].view;
    while (jpeg.output_scanline < jpeg.output_height)
        jpeg_read_scanlines(&jpeg, rows + jpeg.output_scanline, jpeg.output_height - jpeg.output_scanline);
    return jpeg_finish_decompress(&jpeg) != 0;
}

} // namespace

std::optional<Image> decodePng(const std::string& bytes) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::FILE* file = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
    png_init_io(png, file);
    std::optional<Image> result;
    if (readUntransformed(png, info))
        result = fromRows(png, info);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return result;
}

std::optional<Image> decodeJpeg(const std::string& bytes) {
    jpeg_decompress_struct jpeg{};
    Jump jump{};
    jpeg.err = jpeg_std_error(&jump.manager);
    jump.manager.error_exit = [](j_common_ptr object) {
        std::longjmp(reinterpret_cast<Jump*>(object->err)->target, 1);
    };
    Image im(Ko::PF_Y);
    const bool decoded = decodeInto(im, jpeg, jump, bytes);
    jpeg_destroy_decompress(&jpeg);
    return decoded ? std::optional(im) : std::nullopt;
}

} // namespace fuzz
