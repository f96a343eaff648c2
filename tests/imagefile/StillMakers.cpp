#include "imagefile/StillMakers.h"

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
#include <png.h>
#include <zlib.h>

#include <cstdlib>
#include <random>
#include <vector>

namespace test {

namespace {

std::vector<std::vector<unsigned char>> randomRows(std::size_t rowBytes, std::size_t height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::vector<unsigned char>> rows(height, std::vector<unsigned char>(rowBytes));
    for (auto& row : rows)
        for (auto& byte : row)
            byte = static_cast<unsigned char>(random());
    return rows;
}

std::string bigEndian(unsigned value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 255);
    return bytes;
}

} // namespace

std::string makePng(const PngRecipe& recipe) {
    std::string bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr); // aborts on errors
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &bytes,
        [](png_structp p, png_bytep data, png_size_t n) {
            static_cast<std::string*>(png_get_io_ptr(p))->append(reinterpret_cast<char*>(data), n);
        },
        nullptr);
    png_set_IHDR(png, info, recipe.width, recipe.height, recipe.bitDepth, recipe.colorType,
                 recipe.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    if (recipe.colorType == PNG_COLOR_TYPE_PALETTE) {
        const int colors = 1 << recipe.bitDepth;
        std::vector<png_color> palette;
        for (const auto& color : randomRows(3, static_cast<std::size_t>(colors), 7))
            palette.push_back({color[0], color[1], color[2]});
        png_set_PLTE(png, info, palette.data(), colors);
        if (recipe.transparency)
            png_set_tRNS(png, info, randomRows(static_cast<std::size_t>(colors), 1, 8)[0].data(), colors, nullptr);
    } else if (recipe.transparency) {
        const png_color_16 color = {0, 1, 1, 1, 1};
        png_set_tRNS(png, info, nullptr, 0, &color);
    }
    png_write_info(png, info);
    auto rows = randomRows(png_get_rowbytes(png, info), recipe.height, 11);
    std::vector<png_bytep> pointers;
    for (auto& row : rows)
        pointers.push_back(row.data());
    png_write_image(png, pointers.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

std::string makeJpeg(const JpegRecipe& recipe) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &memory, &size);
    jpeg.image_width = recipe.width;
    jpeg.image_height = recipe.height;
    jpeg.input_components = recipe.components;
    jpeg.in_color_space = static_cast<J_COLOR_SPACE>(recipe.inputSpace);
    jpeg_set_defaults(&jpeg);
    jpeg_set_colorspace(&jpeg, static_cast<J_COLOR_SPACE>(recipe.fileSpace));
    jpeg_set_quality(&jpeg, 60, TRUE);
    jpeg.comp_info[0].h_samp_factor = recipe.horizontal;
    jpeg.comp_info[0].v_samp_factor = recipe.vertical;
    jpeg.arith_code = recipe.arithmetic ? TRUE : FALSE;
    if (recipe.progressive)
        jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    auto rows = randomRows(std::size_t{recipe.width} * static_cast<std::size_t>(recipe.components), recipe.height, 5);
    for (auto& row : rows) {
        JSAMPROW pointer = row.data();
        jpeg_write_scanlines(&jpeg, &pointer, 1);
    }
    jpeg_finish_compress(&jpeg);
    std::string bytes(reinterpret_cast<char*>(memory), size);
    jpeg_destroy_compress(&jpeg);
    std::free(memory);
    return bytes;
}

std::string pngChunk(const std::string& type, const std::string& data, unsigned claimedLength) {
    const std::string body = type + data;
    const auto crc = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return bigEndian(claimedLength) + body + bigEndian(static_cast<unsigned>(crc));
}

std::string pngLongText(std::size_t size) {
    const std::string text(size, 'x');
    std::string packed(compressBound(size), '\0');
    uLongf packedSize = packed.size();
    compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize, reinterpret_cast<const Bytef*>(text.data()), size,
              9);
    const std::string data = std::string("Comment\0\0", 9) + packed.substr(0, packedSize);
    return pngChunk("zTXt", data, static_cast<unsigned>(data.size()));
}

std::string withRightChecksums(std::string bytes) {
    std::size_t at = 8;
    while (at + 12 <= bytes.size()) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < 4; ++i)
            length = length << 8 | static_cast<unsigned char>(bytes[at + i]);
        if (length > bytes.size() - at - 12)
            break;
        const std::string chunk =
            pngChunk(bytes.substr(at + 4, 4), bytes.substr(at + 8, length), static_cast<unsigned>(length));
        bytes.replace(at, chunk.size(), chunk);
        at += chunk.size();
    }
    return bytes;
}

std::string pngStart(unsigned width, unsigned height, int bitDepth, int colorType) {
    const std::string header = bigEndian(width) + bigEndian(height) + static_cast<char>(bitDepth) +
                               static_cast<char>(colorType) + std::string(3, '\0');
    return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", header, 13);
}

} // namespace test
