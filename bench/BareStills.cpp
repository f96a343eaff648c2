// SPDX-License-Identifier: BSD-2-Clause
#include "BareStills.h"

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
#include <png.h>

#include <cstdlib>

namespace bench {

namespace {

std::FILE* open(const std::string& name, const char* mode) {
    std::FILE* file = std::fopen(name.c_str(), mode);
    if (!file)
        std::abort();
    return file;
}

void require(bool good) {
    if (!good)
        std::abort();
}

} // namespace

void BarePicture::size(unsigned w, unsigned h) {
    width = w;
    height = h;
    bytes.resize(std::size_t{3} * w * h);
}

unsigned char** BarePicture::rows() {
    table.resize(height);
    for (std::size_t y = 0; y < height; ++y)
        table[y] = bytes.data() + 3 * width * y;
    return table.data();
}

void readBarePixmap(BarePicture& picture, const std::string& name) {
    std::FILE* file = open(name, "rb");
    unsigned width = 0;
    unsigned height = 0;
    require(std::fscanf(file, "P6 %u %u 255", &width, &height) == 2);
    std::fgetc(file);
    picture.size(width, height);
    require(std::fread(picture.bytes.data(), 1, picture.bytes.size(), file) == picture.bytes.size());
    std::fclose(file);
}

void writeBarePixmap(const std::string& name, const BarePicture& picture) {
    std::FILE* file = open(name, "wb");
    std::fprintf(file, "P6 %u %u 255\n", picture.width, picture.height);
    require(std::fwrite(picture.bytes.data(), 1, picture.bytes.size(), file) == picture.bytes.size());
    std::fclose(file);
}

void readBareJpeg(BarePicture& picture, const std::string& name) {
    std::FILE* file = open(name, "rb");
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file);
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = JCS_YCbCr;
    jpeg_start_decompress(&jpeg);
    picture.size(jpeg.output_width, jpeg.output_height);
    unsigned char** rows = picture.rows();
    while (jpeg.output_scanline < jpeg.output_height)
        jpeg_read_scanlines(&jpeg, rows + jpeg.output_scanline, jpeg.output_height - jpeg.output_scanline);
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    std::fclose(file);
}

void writeBareJpeg(const std::string& name, BarePicture& picture) {
    std::FILE* file = open(name, "wb");
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = picture.width;
    jpeg.image_height = picture.height;
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 100, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    jpeg_write_scanlines(&jpeg, picture.rows(), picture.height);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
}

void readBarePng(BarePicture& picture, const std::string& name) {
    std::FILE* file = open(name, "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_info(png, info);
    picture.size(png_get_image_width(png, info), png_get_image_height(png, info));
    require(png_get_rowbytes(png, info) == std::size_t{3} * picture.width);
    png_read_image(png, picture.rows());
    png_read_end(png, info);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
}

void writeBarePng(const std::string& name, BarePicture& picture) {
    std::FILE* file = open(name, "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, picture.width, picture.height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    png_write_info(png, info);
    png_write_image(png, picture.rows());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

} // namespace bench
