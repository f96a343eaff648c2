#include "Kovanta/ImageFile.h"

#include "Kovanta/ConvertIm.h"
#include "image/ImageLayout.h"
#include "imagefile/File.h"
#include "imagefile/Picture.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <locale>

namespace Ko {

namespace {

using Im = Image<unsigned char>;

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
bool takesPixelsOf(const Im& im, const Im& picture) {
    return im.format == picture.format && im.planar == picture.planar &&
           im.bytesPerPixelNum == picture.bytesPerPixelNum && im.bytesPerPixelDen == picture.bytesPerPixelDen &&
           std::equal(std::begin(im.horDiv), std::end(im.horDiv), std::begin(picture.horDiv)) &&
           std::equal(std::begin(im.verDiv), std::end(im.verDiv), std::begin(picture.verDiv)) &&
           std::all_of(std::begin(im.plane), std::end(im.plane),
                       [](const Array2D<unsigned char>& plane) { return plane.alloc; });
}

/// Fills plane 0 from the stream; what the file does not hold becomes 0, so that no stale memory shows.
void readRows(std::istream& stream, Im& picture, std::size_t rowBytes) {
    forEachRun(picture.plane[0].view, rowBytes, picture.plane[0].rows ? picture.height : 0,
               [&](char* bytes, std::size_t n) {
                   stream.read(bytes, static_cast<std::streamsize>(n));
                   const auto got = static_cast<std::size_t>(stream.gcount());
                   std::memset(bytes + got, 0, n - got);
               });
}

void readPixmap(Im& im, const std::string& name, const PixmapKind& kind) {
    errno = 0;
    std::ifstream stream(name);
    if (!stream.is_open())
        throwCannotOpen(kind.reader, name, errno);
    struct stat status {};
    if (stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        throwCannotOpen(kind.reader, name, EISDIR);
    stream.imbue(std::locale::classic()); // for the pixels too: a locale may convert bytes

    unsigned int width = 0;
    unsigned int height = 0;
    parseHeader(width, height, stream, kind.digit);
    requireFits(kind.reader, width, height, kind.bytesPerPixel);
    const std::size_t rowBytes = std::size_t{width} * kind.bytesPerPixel;
    Im picture(kind.format);
    if (takesPixelsOf(im, picture)) {
        // Nothing fails from here on, so the pixels need no second place.
        ImageLayout::resizeTarget(im, width, height, "convertIm");
        im.sequenceNumber = picture.sequenceNumber;
        readRows(stream, im, rowBytes);
        return;
    }
    picture.size(width, height, true);
    readRows(stream, picture, rowBytes);
    convertIm(im, picture);
}

void writePixmap(const std::string& name, const Im& im, const PixmapKind& kind) {
    errno = 0;
    std::ofstream stream(name, std::ios::binary);
    if (!stream.is_open())
        throwCannotOpen(kind.writer, name, errno);
    stream.imbue(std::locale::classic());
    stream << 'P' << kind.digit << ' ' << im.width << ' ' << im.height << " 255\n" << std::flush;

    const StoredPicture picture(im, kind.format);
    forEachRun(picture.rows(), picture.rowBytes(), im.height,
               [&](const char* bytes, std::size_t n) { stream.write(bytes, static_cast<std::streamsize>(n)); });
}

} // namespace

void readPpmImage(Im& im, const std::string& name) {
    readPixmap(im, name, ppm);
}

void readPgmImage(Im& im, const std::string& name) {
    readPixmap(im, name, pgm);
}

void writePpmImage(const std::string& name, const Im& im) {
    writePixmap(name, im, ppm);
}

void writePgmImage(const std::string& name, const Im& im) {
    writePixmap(name, im, pgm);
}

} // namespace Ko
