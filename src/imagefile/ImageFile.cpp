#include "Kovanta/ImageFile.h"

#include "util/Errors.h"

#include <locale>

namespace Ko {

namespace {

struct FileFormat {
    const char* extension;
    void (*read)(Image<unsigned char>& im, const std::string& name);
    void (*write)(const std::string& name, const Image<unsigned char>& im);
};

constexpr FileFormat fileFormats[] = {
    {".pgm", readPgmImage, writePgmImage},   {".ppm", readPpmImage, writePpmImage},
    {".png", readPngImage, writePngImage},   {".jpeg", readJpegImage, writeJpegImage},
    {".jpg", readJpegImage, writeJpegImage},
};

/// The format that the name's last dot announces, or null. Without a dot, substr() throws what callers get to see.
const FileFormat* findFileFormat(const std::string& name) {
    std::string extension = name.substr(name.rfind('.'));
    for (char& c : extension)
        c = std::tolower(c, std::locale::classic());
    for (const FileFormat& format : fileFormats)
        if (extension == format.extension)
            return &format;
    return nullptr;
}

} // namespace

void readImage(Image<unsigned char>& im, const std::string& name) {
    const FileFormat* format = findFileFormat(name);
    if (!format)
        throwLogicError("readImage", "Cannot read " + name + ": extension not recognized.");
    format->read(im, name);
}

void writeImage(const std::string& name, const Image<unsigned char>& im) {
    const FileFormat* format = findFileFormat(name);
    if (!format)
        throwLogicError("writeImage", "Cannot write " + name + ": extension not recognized.");
    format->write(name, im);
}

} // namespace Ko
