// Reads PNG and JPEG files that others made, and compares every sample with what bare libpng and libjpeg deliver and
// with the conversion's formulas. Usage: check_real_stills [--most FILES_OF_A_KIND] DIRECTORY...

#include "Kovanta/ImageFile.h"

#include "imagefile/StillOracle.h"
#include "support/TempDirectory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr int nothingToDo = 77;

struct Counts {
    int png = 0;
    int jpeg = 0;
    int refused = 0; // by the bare library and by us
    int failures = 0;
    unsigned long long pixels = 0;
};

std::string lowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    for (char& c : extension)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return extension;
}

std::vector<std::string> findStills(const std::string& directory) {
    namespace fs = std::filesystem;
    std::vector<std::string> found;
    for (const auto& entry :
         fs::recursive_directory_iterator(directory, fs::directory_options::skip_permission_denied)) {
        const std::string extension = lowerExtension(entry.path());
        if (entry.is_regular_file() && !entry.is_symlink() &&
            (extension == ".png" || extension == ".jpg" || extension == ".jpeg"))
            found.push_back(entry.path().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// What is wrong with how a file is read; counts it.
std::string compare(const std::string& path, Counts& counts) {
    const std::string bytes = test::fileBytes(path);
    const bool png = lowerExtension(path) == ".png";
    const auto decoded = png ? test::decodePng(bytes) : test::decodeJpeg(bytes);
    if (!decoded) {
        ++counts.refused;
        Ko::Image<unsigned char> im(Ko::PF_YCC444P);
        try {
            Ko::readImage(im, path);
        } catch (const std::exception&) {
            return "";
        }
        return "read, although the bare library refuses it";
    }
    ++(png ? counts.png : counts.jpeg);
    counts.pixels += static_cast<unsigned long long>(decoded->width) * decoded->height;
    const std::string wrong = test::wrongReading(path, *decoded, Ko::PF_YCC444P);
    return wrong.empty() ? test::wrongReading(path, *decoded, decoded->format) : wrong;
}

} // namespace

int main(int argc, char** argv) {
    std::size_t most = static_cast<std::size_t>(-1);
    std::vector<std::string> pngs;
    std::vector<std::string> jpegs;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--most" && i + 1 < argc) {
            most = std::strtoul(argv[++i], nullptr, 10);
            continue;
        }
        for (const std::string& path : findStills(argv[i]))
            (lowerExtension(path) == ".png" ? pngs : jpegs).push_back(path);
    }
    if (pngs.empty() && jpegs.empty()) {
        std::puts("No PNG or JPEG files here.");
        return nothingToDo;
    }
    Counts counts;
    for (const auto* files : {&pngs, &jpegs}) {
        // Every so many, so that a few hundred stand for all places.
        const std::size_t step = most == 0 || files->size() <= most ? 1 : (files->size() + most - 1) / most;
        for (std::size_t i = 0; i < files->size(); i += step) {
            const std::string failure = compare((*files)[i], counts);
            if (!failure.empty()) {
                std::printf("FAILED: %s: %s\n", (*files)[i].c_str(), failure.c_str());
                ++counts.failures;
            }
        }
    }
    std::printf("%d PNG and %d JPEG files compared (%.1f million pixels), %d refused by both, %d failures\n",
                counts.png, counts.jpeg, static_cast<double>(counts.pixels) / 1e6, counts.refused, counts.failures);
    return counts.failures == 0 && counts.png + counts.jpeg > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
