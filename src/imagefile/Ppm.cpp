// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "Kovanta/ConvertIm.h"
#include "image/ImageLayout.h"
#include "imagefile/File.h"
#include "imagefile/ParseHeader.h"
#include "imagefile/PictureLimit.h"
#include "imagefile/StillFormats.h"
#include "imagefile/StoredPicture.h"
#include "imagefile/ZeroFill.h"

#include <ext/stdio_sync_filebuf.h>

#include <algorithm>
#include <istream>
#include <iterator>
#include <locale>
#include <stdexcept>

namespace Ko {

namespace {

struct PixmapKind {
    char digit;
    PIXEL_FORMAT format;
    std::uint32_t bytesPerPixel;
    const char* reader;
    const char* writer;
};

constexpr PixmapKind ppm = {'6', PF_RGB, 3, "readPpmImage", "writePpmImage"};
constexpr PixmapKind pgm = {'5', PF_Y, 1, "readPgmImage", "writePgmImage"};

/// Calls @p transfer(first byte, bytes) for each stretch of rows that follow each other in memory; mostly that is one.
template <class Transfer>
void forEachRun(unsigned char* const* rows, std::size_t rowBytes, std::size_t height, Transfer transfer) {
    for (std::size_t y = 0; y < height && rowBytes != 0;) {
        std::size_t end = y + 1;
        while (end < height && rows[end] == rows[end - 1] + rowBytes)
            ++end;
        transfer(reinterpret_cast<char*>(rows[y]), (end - y) * rowBytes);
        y = end;
    }
}

/// Whether pixels can be read straight into the image: it is laid out as the picture, and holds no foreign memory.
bool takesPixelsOf(const Image<>& im, const Image<>& picture) {
    return im.format == picture.format && im.planar == picture.planar &&
           im.bytesPerPixelNum == picture.bytesPerPixelNum && im.bytesPerPixelDen == picture.bytesPerPixelDen &&
           std::equal(std::begin(im.horDiv), std::end(im.horDiv), std::begin(picture.horDiv)) &&
           std::equal(std::begin(im.verDiv), std::end(im.verDiv), std::begin(picture.verDiv)) &&
           std::all_of(std::begin(im.plane), std::end(im.plane),
                       [](const Array2D<unsigned char>& plane) { return plane.alloc; });
}

/// Fills plane 0 from the stream; what the file does not hold becomes 0, so that no stale memory shows.
void readRows(std::istream& stream, Image<>& picture, std::size_t rowBytes) {
    forEachRun(picture.plane[0].view, rowBytes, picture.plane[0].rows ? picture.height : 0,
               [&](char* bytes, std::size_t n) {
                   stream.read(bytes, static_cast<std::streamsize>(n));
                   const auto got = static_cast<std::size_t>(stream.gcount());
                   zeroFill(bytes + got, n - got);
               });
}

/// An image of the file's kind without what no reader looks at: the two planes that PF_Y has beside its own, which
/// would come with a table of rows each.
Image<> withOnePlane(PIXEL_FORMAT format) {
    Image<> picture(format);
    std::fill(std::begin(picture.horDiv) + 1, std::end(picture.horDiv), 0);
    std::fill(std::begin(picture.verDiv) + 1, std::end(picture.verDiv), 0);
    return picture;
}

/// convertIm(), except that an image over foreign memory of another size stays as it was.
void convertInto(Image<>& im, const Image<>& picture) {
    const std::uint32_t width = im.width;
    const std::uint32_t height = im.height;
    try {
        convertIm(im, picture);
    } catch (const std::logic_error&) {
        if (!im.plane[0].alloc) {
            im.width = width;
            im.height = height;
        }
        throw;
    }
}

using HeaderParser = void (*)(unsigned int& width, unsigned int& height, std::istream& stream, char type);

void decodePixmap(Image<>& im, std::FILE* file, const PixmapKind& kind, HeaderParser parse) {
    __gnu_cxx::stdio_sync_filebuf<char> buffer(file);
    std::istream stream(&buffer);
    stream.imbue(std::locale::classic()); // for the pixels too: a locale may convert bytes

    unsigned int width = 0;
    unsigned int height = 0;
    parse(width, height, stream, kind.digit);
    requireFits(kind.reader, width, height, kind.bytesPerPixel);
    const std::size_t rowBytes = std::size_t{width} * kind.bytesPerPixel;
    const Image<> described(kind.format);
    if (takesPixelsOf(im, described)) {
        // Nothing fails from here on, so the pixels need no second place.
        ImageLayout::resizeTarget(im, width, height, "convertIm");
        im.sequenceNumber = described.sequenceNumber;
        readRows(stream, im, rowBytes);
        return;
    }
    Image<> picture = im.format == kind.format ? Image<>(kind.format) : withOnePlane(kind.format);
    picture.size(width, height, true);
    readRows(stream, picture, rowBytes);
    convertInto(im, picture);
}

void encodePixmap(OutputFile& file, const Image<>& im, const PixmapKind& kind) {
    file.truncate();
    const std::string header =
        std::string{'P', kind.digit, ' '} + std::to_string(im.width) + " " + std::to_string(im.height) + " 255\n";
    file.write(header.data(), header.size());
    file.flush(); // a refused conversion leaves the header behind

    const StoredPicture picture(im, kind.format);
    forEachRun(picture.rows(), picture.rowBytes(), im.height,
               [&](const char* bytes, std::size_t n) { file.write(bytes, n); });
    file.close();
}

} // namespace

void decodePpm(Image<>& im, std::FILE* file) {
    decodePixmap(im, file, ppm, parseWholeHeader);
}

void decodePgm(Image<>& im, std::FILE* file) {
    decodePixmap(im, file, pgm, parseWholeHeader);
}

void encodePpm(OutputFile& file, const Image<>& im) {
    encodePixmap(file, im, ppm);
}

void encodePgm(OutputFile& file, const Image<>& im) {
    encodePixmap(file, im, pgm);
}

void readPpmImage(Image<>& im, const std::string& name) {
    decodePixmap(im, openFile(ppm.reader, name).get(), ppm, parseHeader);
}

void readPgmImage(Image<>& im, const std::string& name) {
    decodePixmap(im, openFile(pgm.reader, name).get(), pgm, parseHeader);
}

void writePpmImage(const std::string& name, const Image<>& im) {
    OutputFile file(ppm.writer, name);
    encodePpm(file, im);
}

void writePgmImage(const std::string& name, const Image<>& im) {
    OutputFile file(pgm.writer, name);
    encodePgm(file, im);
}

} // namespace Ko
