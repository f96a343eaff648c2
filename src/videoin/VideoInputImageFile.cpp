// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInputImageFile.h"

#include "Kovanta/ImageFile.h"
#include "imagefile/StillFormats.h"
#include "util/Errors.h"

#include <boost/filesystem.hpp>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace Ko {

namespace {

namespace fs = boost::filesystem;

constexpr const char* constructorName = "VideoInputImageFile::VideoInputImageFile";

bool isDirectory(const fs::path& path) {
    boost::system::error_code error; // a name that cannot even be looked up is an invalid one
    return fs::is_directory(path, error);
}

bool isStill(const fs::path& path) {
    std::string extension = path.extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return findStillFormat(extension) != nullptr;
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

struct KOVANTA_LOCAL VideoInputImageFile::Impl {
    std::vector<std::string> paths;
    std::uint64_t current = 0;
    std::uint64_t last = 0;
    bool atEnd = false;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

VideoInputImageFile::VideoInputImageFile(std::string directory) // NOLINT(performance-unnecessary-value-param)
    : impl(std::make_unique<Impl>()) {
    const fs::path path(directory);
    if (!isDirectory(path))
        throwRuntimeError(constructorName, "Invalid image file directory given!");
    impl->paths = listStills(path);
    if (impl->paths.empty())
        throwRuntimeError(constructorName, "No image files found!");
    impl->last = impl->paths.size() - 1;
    impl->atEnd = impl->paths.size() == 1;

    Image first(PF_YCC444P);
    readImage(first, impl->paths.front());
    impl->width = first.width;
    impl->height = first.height;
}

VideoInputImageFile::~VideoInputImageFile() = default;

bool VideoInputImageFile::read(Image<>& frame) {
    if (impl->atEnd)
        return false;
    try {
        readImage(frame, impl->paths[impl->current]);
    } catch (const std::exception& e) {
        throwRuntimeError("VideoInputImageFile::read", "Error reading image!", e.what());
    }
    if (impl->current == impl->last)
        impl->atEnd = true;
    else
        ++impl->current;
    return true;
}

long VideoInputImageFile::seek(long offset, VideoPosId origin) {
    const auto distance = static_cast<std::uint64_t>(offset);
    switch (origin) {
    case VP_BEGIN:
        impl->current = std::min(distance, impl->last);
        break;
    case VP_CURRENT:
        impl->current = std::min(impl->current + distance, impl->last);
        break;
    case VP_END:
        impl->current = distance < impl->last ? impl->last - distance : 0;
        break;
    default:
        throwLogicError("VideoInputImageFile::seek", "Erroneous position indicator given!");
    }
    impl->atEnd = false;
    return static_cast<long>(impl->current);
}

long VideoInputImageFile::tell() const {
    return static_cast<long>(impl->current);
}

bool VideoInputImageFile::eof() const {
    return impl->atEnd;
}

unsigned int VideoInputImageFile::getWidth() const {
    return impl->width;
}

unsigned int VideoInputImageFile::getHeight() const {
    return impl->height;
}

long VideoInputImageFile::getLength() const {
    return static_cast<long>(impl->paths.size());
}

} // namespace Ko
