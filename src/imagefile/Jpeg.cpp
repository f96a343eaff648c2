// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "imagefile/DeliverPicture.h"
#include "imagefile/File.h"
#include "imagefile/JpegObjects.h"
#include "imagefile/PictureLimit.h"
#include "imagefile/StillFormats.h"
#include "imagefile/StoredPicture.h"
#include "util/Errors.h"

#include <utility>

namespace Ko {

namespace {

constexpr const char* reading = "readJpegImage";
constexpr const char* writing = "writeJpegImage";

/// Luma samples a chroma sample, across and down.
struct ChromaBlock {
    int width;
    int height;
};

ChromaBlock blockOf(ChromaSampling sampling) {
    switch (sampling) {
    case CS_420:
        return {2, 2};
    case CS_422:
        return {2, 1};
    case CS_444:
        return {1, 1};
    }
    throwLogicError(writing, "Unknown chroma sampling.");
}

void encode(OutputFile& file, const Image<>& im, int quality, ChromaBlock block) {
    const StoredPicture picture(im, PF_JFIF);

    JpegDestination destination(file);
    jpeg_destination_mgr* const manager = &destination.manager;
    const JDIMENSION width = im.width;
    const JDIMENSION height = im.height;
    JSAMPARRAY const rows = picture.rows();
    JpegCompressor jpeg(writing);
    jpeg.run([=](j_compress_ptr info) {
        jpeg_create_compress(info);
        info->dest = manager;
        info->image_width = width;
        info->image_height = height;
        info->input_components = 3;
        info->in_color_space = JCS_YCbCr;
        jpeg_set_defaults(info);
        jpeg_set_quality(info, quality, TRUE);
        info->comp_info[0].h_samp_factor = block.width;
        info->comp_info[0].v_samp_factor = block.height;
        jpeg_start_compress(info, TRUE);
    });
    // Everything that can be refused has been; what the name held may go.
    file.truncate();
    jpeg.run([=](j_compress_ptr info) {
        jpeg_write_scanlines(info, rows, height);
        jpeg_finish_compress(info);
    });
    file.close();
}

} // namespace

void encodeJpeg(OutputFile& file, const Image<>& im) {
    encode(file, im, 100, blockOf(CS_420));
}

void writeJpegImage(const std::string& name, const Image<>& im) {
    OutputFile file(writing, name);
    encodeJpeg(file, im);
}

void writeJpegImage(const std::string& name, const Image<>& im, unsigned int quality, ChromaSampling sampling) {
    if (quality < 1 || quality > 100)
        throwLogicError(writing, "Quality must be 1 to 100.");
    const ChromaBlock block = blockOf(sampling);
    OutputFile file(writing, name);
    encode(file, im, static_cast<int>(quality), block);
}

void readJpegImage(Image<>& im, const std::string& name) {
    decodeJpeg(im, openFile(reading, name).get());
}

void decodeJpeg(Image<>& im, std::FILE* file) {
    constexpr const char* function = reading;
    JpegScanLimit limit{};
    jpeg_progress_mgr* const monitor = limit.install();
    JpegDecompressor jpeg(function);
    jpeg.run([=](j_decompress_ptr info) {
        jpeg_create_decompress(info);
        info->progress = monitor;
        jpeg_stdio_src(info, file);
        jpeg_read_header(info, TRUE);
    });
    requireFits(function, jpeg->image_width, jpeg->image_height, static_cast<std::uint32_t>(jpeg->num_components));

    const long mostMemory = mostJpegMemory(jpeg->image_width, jpeg->image_height, jpeg->num_components);

    const J_COLOR_SPACE coding = jpeg->jpeg_color_space;
    if (coding != JCS_GRAYSCALE && coding != JCS_RGB && coding != JCS_YCbCr)
        throwRuntimeError(function, "Unsupported color space.");
    // libjpeg has no way from RGB to Y'CbCr: such a file ends in its error.
    const J_COLOR_SPACE wanted = coding == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_YCbCr;
    jpeg.run([=](j_decompress_ptr info) {
        info->out_color_space = wanted;
        info->mem->max_memory_to_use = mostMemory;
        jpeg_start_decompress(info);
    });

    Image<> picture(wanted == JCS_GRAYSCALE ? PF_Y : PF_JFIF);
    picture.size(jpeg->output_width, jpeg->output_height, true);
    JSAMPARRAY const rows = picture.plane[0].view;
    jpeg.run([=](j_decompress_ptr info) {
        while (info->output_scanline < info->output_height)
            jpeg_read_scanlines(info, rows + info->output_scanline, 1);
        jpeg_finish_decompress(info);
    });
    if (std::ferror(file)) // which libjpeg takes for the end of the file
        throwRuntimeError(function, "libjpeg failed.", "Input file read error");
    deliver(im, std::move(picture));
}

} // namespace Ko
