#include "Kovanta/VideoInputImageFile.h"

#include "Kovanta/ImageFile.h"
#include "util/Errors.h"

#include <boost/filesystem.hpp>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <stdexcept>

namespace Ko {

namespace {

namespace fs = boost::filesystem;

constexpr const char* constructorName = "VideoInputImageFile::VideoInputImageFile";

bool isDirectory(const fs::path& path) {
    boost::system::error_code error; // a name that cannot even be looked up is an invalid one
    return fs::is_directory(path, error);
}

bool isStill(const fs::path& path) {
    static constexpr const char* extensions[] = {".jpg", ".jpeg", ".png", ".ppm", ".pgm"};
    std::string extension = path.extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return std::any_of(std::begin(extensions), std::end(extensions),
                       [&](const char* accepted) { return extension == accepted; });
}

std::vector<std::string> listStills(const fs::path& directory) {
    std::vector<std::string> paths;
    try {
        for (const fs::directory_entry& entry : fs::directory_iterator(directory))
            // Not the entry's own status, which the listing may know without a look at the file.
            if (fs::is_regular_file(fs::status(entry.path())) && isStill(entry.path()))
                paths.push_back(entry.path().string());
    } catch (const std::exception& e) {
        throwRuntimeError(constructorName, "Error reading image directory!", e.what());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace

VideoInputImageFile::VideoInputImageFile(std::string directory) { // NOLINT(performance-unnecessary-value-param)
    const fs::path path(directory);
    if (!isDirectory(path))
        throwRuntimeError(constructorName, "Invalid image file directory given!");
    paths = listStills(path);
    if (paths.empty())
        throwRuntimeError(constructorName, "No image files found!");
    last = paths.size() - 1;
    atEnd = paths.size() == 1;

    Image<unsigned char> first(PF_YCC444P);
    readImage(first, paths.front());
    width = first.width;
    height = first.height;
}

VideoInputImageFile::~VideoInputImageFile() = default;

bool VideoInputImageFile::read(Image<unsigned char>& frame) {
    if (atEnd)
        return false;
    try {
        readImage(frame, paths[current]);
    } catch (const std::exception& e) {
        throwRuntimeError("VideoInputImageFile::read", "Error reading image!", e.what());
    }
    if (current == last)
        atEnd = true;
    else
        ++current;
    return true;
}

long VideoInputImageFile::seek(long offset, VideoPosId origin) {
    const auto distance = static_cast<std::uint64_t>(offset);
    switch (origin) {
    case VP_BEGIN:
        current = std::min(distance, last);
        break;
    case VP_CURRENT:
        current = std::min(current + distance, last);
        break;
    case VP_END:
        current = distance < last ? last - distance : 0;
        break;
    default:
        throwLogicError("VideoInputImageFile::seek", "Erroneous position indicator given!");
    }
    atEnd = false;
    return static_cast<long>(current);
}

long VideoInputImageFile::tell() const {
    return static_cast<long>(current);
}

bool VideoInputImageFile::eof() const {
    return atEnd;
}

unsigned int VideoInputImageFile::getWidth() const {
    return width;
}

unsigned int VideoInputImageFile::getHeight() const {
    return height;
}

long VideoInputImageFile::getLength() const {
    return static_cast<long>(paths.size());
}

} // namespace Ko
