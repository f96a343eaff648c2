// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Choices.h"
#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInputImageFile.h"
#include "support/TempDirectory.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <vector>

// A directory of up to five stills that are cut from the input, read and sought, with a model of the position.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const test::TempDirectory directory;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path()))
        std::filesystem::remove_all(entry);
    fuzz::Choices choices(bytes, size);
    const char* const names[] = {"a.ppm", "b.PGM", "c.png",     "d.Jpg", "e.jpeg",
                                 "f.txt", ".pgm",  "g.pgm.bak", "h",     "i.pgm"};
    const unsigned files = choices.below(6);
    std::vector<unsigned> operations;
    for (int i = 0; i < 12; ++i)
        operations.push_back(choices.word());
    long stills = 0;
    bool madeOnce[std::size(names)] = {};
    std::vector<unsigned> kinds;
    for (unsigned i = 0; i < files; ++i)
        kinds.push_back(choices.below(std::size(names)));
    const std::string whole(reinterpret_cast<const char*>(bytes), choices.left());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const std::size_t part = whole.size() / kinds.size();
        directory.write(names[kinds[i]], whole.substr(i * part, i + 1 < kinds.size() ? part : std::string::npos));
        const bool still = kinds[i] < 5 || kinds[i] == 6 || kinds[i] == 9;
        stills += still && !madeOnce[kinds[i]];
        madeOnce[kinds[i]] = true;
    }
    // A comment that the file never ends is read for ever.
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        const std::string text = test::fileBytes(entry.path().string());
        const std::size_t comment = text.rfind('#');
        if (comment != std::string::npos && text.find('\n', comment) == std::string::npos)
            return 0;
    }
    const fuzz::DescriptorWatch descriptors;
    const fuzz::AllocationLimit limit(std::size_t{1} << 26);
    Ko::setMaxImagePixels(1 << 16);
    try {
        Ko::VideoInputImageFile source(directory.path());
        fuzz::require(source.getLength() == stills, "another number of stills");
        long position = 0;
        bool atEnd = stills == 1;
        Ko::Image frame(Ko::PF_YCC444P);
        for (const unsigned operation : operations) {
            if (operation % 3 != 0) {
                try {
                    const bool read = source.read(frame);
                    fuzz::require(read != atEnd, "read at the end, or not before it");
                    if (read && position == stills - 1)
                        atEnd = true;
                    else if (read)
                        ++position;
                } catch (const std::runtime_error&) {
                    fuzz::require(!atEnd, "an exception at the end");
                }
            } else {
                const long offset = static_cast<long>(operation / 12 % 12) - 4;
                const unsigned origin = operation / 3 % 3;
                const unsigned long last = static_cast<unsigned long>(stills - 1);
                const auto far = static_cast<unsigned long>(offset);
                const auto here = static_cast<unsigned long>(position);
                position = static_cast<long>(origin == Ko::VP_BEGIN     ? std::min(far, last)
                                             : origin == Ko::VP_CURRENT ? std::min(here + far, last)
                                             : far < last               ? last - far
                                                                        : 0);
                fuzz::require(source.seek(offset, static_cast<Ko::VideoPosId>(origin)) == position,
                              "seek went elsewhere");
                atEnd = false;
            }
            fuzz::require(source.tell() == position && source.eof() == atEnd, "the position is another");
        }
    } catch (const std::exception&) { // no stills, or the first one is damaged
    }
    Ko::setMaxImagePixels(0);
    return 0;
}
