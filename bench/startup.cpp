// SPDX-License-Identifier: BSD-2-Clause
// What it costs to begin: loading the library, the first conversion, opening files, a font, a directory of stills;
// beside what lies below the library and nothing around it. Arguments are those of Google Benchmark, and --table=FILE.
#include "BareLibav.h"
#include "Contest.h"

#include "Kovanta/Font.h"
#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "draw/Glyph.h"

#include <dirent.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

using namespace bench;

constexpr int width = 640;
constexpr int height = 480;
constexpr int bitRate = 1000000;
constexpr unsigned int pixels = 20;
constexpr int stills = 100000;

void must(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

/// Runs a program beside this one to its end.
void run(const std::string& program, const char* argument = nullptr) {
    const std::string file = std::filesystem::read_symlink("/proc/self/exe").replace_filename(program).string();
    char* arguments[] = {const_cast<char*>(file.c_str()), const_cast<char*>(argument), nullptr};
    pid_t child = 0;
    must(posix_spawn(&child, file.c_str(), nullptr, nullptr, arguments, environ) == 0, "posix_spawn");
    int status = 0;
    must(waitpid(child, &status, 0) == child && status == 0, program.c_str());
}

void bareFont() {
    FT_Library opened = nullptr;
    must(FT_Init_FreeType(&opened) == 0, "FT_Init_FreeType");
    const Ko::LibraryPtr library(opened);
    FT_Face loaded = nullptr;
    must(FT_New_Memory_Face(opened, luximr_ttf, static_cast<FT_Long>(luximr_ttf_size), 0, &loaded) == 0,
         "FT_New_Memory_Face");
    const Ko::FacePtr face(loaded);
    must(FT_Set_Pixel_Sizes(loaded, pixels, 0) == 0, "FT_Set_Pixel_Sizes");
    for (unsigned int code = 0; code < 128; ++code)
        must(FT_Load_Char(loaded, code, FT_LOAD_RENDER) == 0, "FT_Load_Char");
}

/// Names of regular files in order, with one status call each.
std::vector<std::string> bareListing(const std::string& directory) {
    std::vector<std::string> names;
    DIR* const opened = opendir(directory.c_str());
    must(opened != nullptr, "opendir");
    while (const dirent* entry = readdir(opened)) {
        std::string path = directory + "/" + entry->d_name;
        struct stat status {};
        if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
            names.push_back(std::move(path));
    }
    closedir(opened);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

int main(int argc, char** argv) {
    std::string folder = (std::filesystem::temp_directory_path() / "kovanta-bench-XXXXXX").string();
    must(mkdtemp(folder.data()) != nullptr, "mkdtemp");
    const std::string video = folder + "/video.mp4";
    const std::string target = folder + "/target.mp4";
    const std::string directory = folder + "/stills";
    Ko::Image frame(Ko::PF_YCC444P);
    frame.size(width, height);
    for (auto& plane : frame.plane)
        if (plane.data)
            std::fill_n(plane.data, std::size_t{plane.width} * plane.height, static_cast<unsigned char>(90));
    Ko::VideoOutputVideoFile writer(width, height, video, {25, 1}, bitRate);
    for (int n = 0; n < 25; ++n)
        writer.write(frame);
    writer.close();
    std::filesystem::create_directory(directory);
    Ko::Image small(Ko::PF_Y);
    small.size(1, 1);
    small.plane[0].row(0)[0] = 0;
    Ko::writeImage(directory + "/000000.pgm", small);
    for (int n = 1; n < stills; ++n) {
        const std::string number = std::to_string(n);
        std::ofstream(directory + "/" + std::string(6 - number.size(), '0') + number + ".pgm");
    }

    const std::vector<Contest> contests = {
        {"load the library",
         1,
         {{"Kovanta", Side::ours,
           [] {
               run("bench_load_kovanta");
           }},
          {"libavformat, libavcodec", Side::bound,
           [] {
               run("bench_load_libav");
           }}}},
        {"load and convert once",
         1,
         {{"Kovanta", Side::ours,
           [] {
               run("bench_load_kovanta", "convert");
           }},
          {"load only", Side::bound,
           [] {
               run("bench_load_kovanta");
           }}}},
        {"open and close a video file",
         1,
         {{"VideoInputVideoFile", Side::ours,
           [&] {
               Ko::VideoInputVideoFile in(video);
           }},
          {"libav", Side::bound,
           [&] {
               BareReader in(video);
           }}}},
        {"create and close a video file",
         1,
         {{"VideoOutputVideoFile", Side::ours,
           [&] {
               Ko::VideoOutputVideoFile out;
               out.setEncoder("mpeg4").open(width, height, target, {25, 1}, bitRate);
               out.write(frame);
               out.close();
           }},
          {"libav", Side::bound,
           [&] {
               BareWriter out(target, width, height, bitRate);
               out.picture();
               out.encode();
               out.close();
           }}}},
        {"a font of 20 pixels",
         1,
         {{"Font::init", Side::ours,
           [] {
               Ko::Font font;
               font.init(pixels);
           }},
          {"FreeType", Side::bound, bareFont}}},
        {"a directory of 100,000 stills",
         1,
         {{"VideoInputImageFile", Side::ours,
           [&] {
               Ko::VideoInputImageFile in(directory);
           }},
          {"readdir, stat and sort", Side::bound,
           [&] {
               bareListing(directory);
           }}}},
    };
    const int result = runContests(argc, argv, contests, {"times a second", 1, false});
    std::filesystem::remove_all(folder);
    return result;
}
