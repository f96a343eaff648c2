// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Font.h"

#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

/// Counts what FreeType holds while it lives, and can refuse it memory. The program's FT_Init_FreeType and
/// FT_Done_FreeType stand before FreeType's own, for the library under test as well. Not for several threads.
class FreeTypeWatch {
public:
    FreeTypeWatch() = default;
    FreeTypeWatch(const FreeTypeWatch&) = delete;
    FreeTypeWatch& operator=(const FreeTypeWatch&) = delete;
    ~FreeTypeWatch() {
        countdown = 0;
        onAllocation = nullptr;
    }

    /// Refuses the n-th allocation from now on (1 is the next), once.
    void refuse(long n) { countdown = n; }
    bool refused() const { return countdown == 0; }

    /// What is held now and was not when the watch began.
    long blocks() const { return blocksHeld - blocksBefore; }
    long libraries() const { return librariesHeld - librariesBefore; }

    static inline void (*onAllocation)() = nullptr; ///< Called before each allocation of a library that is there.
    static inline long blocksHeld = 0, librariesHeld = 0, countdown = 0; ///< Of the whole program.

private:
    long blocksBefore = blocksHeld, librariesBefore = librariesHeld;
};

void* resize(FT_Memory, long, long size, void* block) {
    if (FreeTypeWatch::onAllocation && FreeTypeWatch::librariesHeld > 0)
        FreeTypeWatch::onAllocation();
    if (FreeTypeWatch::countdown > 0 && --FreeTypeWatch::countdown == 0)
        return nullptr;
    return std::realloc(block, static_cast<std::size_t>(size));
}

void* take(FT_Memory memory, long size) {
    void* const block = resize(memory, 0, size, nullptr);
    FreeTypeWatch::blocksHeld += block != nullptr;
    return block;
}

void give(FT_Memory, void* block) {
    --FreeTypeWatch::blocksHeld;
    std::free(block);
}

FT_MemoryRec_ watchedMemory{nullptr, take, give, resize};

} // namespace

extern "C" FT_Error FT_Init_FreeType(FT_Library* library) {
    const FT_Error error = FT_New_Library(&watchedMemory, library);
    if (error != 0)
        return error;
    FT_Add_Default_Modules(*library);
    FT_Set_Default_Properties(*library);
    ++FreeTypeWatch::librariesHeld;
    return 0;
}

extern "C" FT_Error FT_Done_FreeType(FT_Library library) {
    --FreeTypeWatch::librariesHeld;
    return FT_Done_Library(library);
}

namespace {

using test::Image;
using test::randomImage;

constexpr Ko::YCCColor ink{235, 90, 170};
const Image blank = randomImage(Ko::PF_YCC444P, 70, 50);
const std::string builtIn(reinterpret_cast<const char*>(luximr_ttf), luximr_ttf_size);

/// small.ttf has a missing-glyph box, and for 'A' a triangle that reaches left of its origin and below the baseline;
/// small.bdf, 10 pixels high, an 'A' of 11 pixels, one bit each, so its rows take two bytes.
std::string corpus(const std::string& name) {
    return test::fileBytes(KOVANTA_FONTS + name);
}

/// Every byte: each character, followed by one that draws nothing.
const std::string allCharacters = [] {
    std::string text;
    for (int c = 0; c < 128; ++c)
        text += {static_cast<char>(c), static_cast<char>(c | 128)};
    return text;
}();

bool same(const Image& a, const Image& b) {
    return test::difference(a, b).empty();
}

std::string failure(const std::function<void()>& action) {
    return test::thrownText<std::runtime_error>(action);
}

Ko::Font sized(unsigned int pixels, const std::string& data = builtIn) {
    Ko::Font font;
    font.init(data.data(), data.size(), pixels);
    return font;
}

Image drawn(const Ko::Font& font, const std::string& text, int x = 5, int y = 30, Image im = blank) {
    font.drawText(im, text, {x, y}, ink);
    return im;
}

/// Draws as documented, asking FreeType for each glyph anew and visiting each pixel alone.
struct Oracle {
    explicit Oracle(unsigned int pixels, const std::string& data = builtIn)
        : pixelSize(pixels) {
        FT_Init_FreeType(&library);
        FT_New_Memory_Face(library, reinterpret_cast<const FT_Byte*>(data.data()), static_cast<FT_Long>(data.size()), 0,
                           &face);
        FT_Set_Pixel_Sizes(face, pixels, 0);
    }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;
    ~Oracle() { FT_Done_FreeType(library); }

    Image drawn(const std::string& text, long x = 5, long y = 30, Image im = blank) {
        const long left = x;
        for (const char character : text) {
            if (character == '\n') {
                x = left;
                y += pixelSize;
                continue;
            }
            if (static_cast<signed char>(character) < 0)
                continue;
            FT_Load_Glyph(face, FT_Get_Char_Index(face, static_cast<FT_ULong>(character)), FT_LOAD_RENDER);
            const FT_GlyphSlot slot = face->glyph;
            const long columns = slot->bitmap.width;
            const long rows = slot->bitmap.rows;
            const long x0 = x + slot->bitmap_left;
            const long y0 = y - slot->bitmap_top;
            // A glyph that crosses the right or bottom edge leaves the last column or row alone.
            const long w = x0 + columns > im.width ? im.width - 1L : im.width;
            const long h = y0 + rows > im.height ? im.height - 1L : im.height;
            for (long py = y0; py < y0 + rows; ++py)
                for (long px = x0; px < x0 + columns; ++px)
                    for (int p = 0; p < 3 && px >= 0 && py >= 0 && px < w && py < h; ++p) {
                        const unsigned int a = slot->bitmap.buffer[(py - y0) * slot->bitmap.pitch + px - x0];
                        const unsigned char color[3] = {ink.y, ink.cb, ink.cr};
                        unsigned char& s = im.plane[p].view[py][px];
                        s = static_cast<unsigned char>(((256 - a) * s + a * color[p]) >> 8);
                    }
            x += (slot->advance.x * 1024 + 32768) >> 16; // 26.6 to 16.16 to whole pixels
            y += (slot->advance.y * 1024 + 32768) >> 16;
        }
        return im;
    }

    unsigned int pixelSize;
    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

TEST(Font, TheBuiltInFontIsTheUnmodifiedFile) {
    EXPECT_EQ(builtIn.size(), 71784u);
    EXPECT_TRUE(test::fileBytes(KOVANTA_FONT_FILE) == builtIn);
    // A TrueType file's words, head.checkSumAdjustment included, add up to this.
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < builtIn.size(); ++i)
        sum += std::uint32_t{luximr_ttf[i]} << (24 - i % 4 * 8);
    EXPECT_EQ(sum, 0xB1B0AFBAu);
}

TEST(Font, EveryCharacterAtManySizesIsBitExact) {
    for (const unsigned int pixels : {0u, 1u, 5u, 9u, 12u, 20u, 33u, 64u})
        for (const auto format : {Ko::PF_YCC444P, Ko::PF_YCCA4444P}) {
            const Image before = randomImage(format, pixels * 50 + 40, 300);
            const Image is = drawn(sized(pixels), allCharacters, 3, 100, before);
            EXPECT_TRUE(same(is, Oracle(pixels).drawn(allCharacters, 3, 100, before))) << pixels;
            EXPECT_FALSE(same(is, before)) << pixels;
        }
}

TEST(Font, BrokenAdvancesAreRounded) {
    for (const unsigned int pixels : {10u, 11u, 12u, 13u, 17u}) {
        Oracle oracle(pixels); // holds the library of the glyphs
        FT_Matrix sheared{0x10a00, 0x2000, 0x3300, 0xf500};
        FT_Set_Transform(oracle.face, &sheared, nullptr);
        Ko::Font font;
        for (unsigned char c = 0; c < 128; ++c)
            font.renderChar(oracle.face, c);
        const Image before = randomImage(Ko::PF_YCC444P, 400, 200);
        const char* const text = "sheared and climbing";
        EXPECT_TRUE(same(drawn(font, text, 5, 40, before), oracle.drawn(text, 5, 40, before))) << pixels;
    }
}

TEST(Font, ClipsAtEveryEdge) {
    const Ko::Font font = sized(16);
    Oracle oracle(16);
    const Image small = randomImage(Ko::PF_YCC444P, 23, 19);
    for (int y = -8; y < 40; ++y)
        for (int x = -30; x < 30; ++x)
            ASSERT_TRUE(same(drawn(font, "gW\nA", x, y, small), oracle.drawn("gW\nA", x, y, small))) << x << "," << y;
    const std::string text(400, 'W');
    for (const int x : {INT_MIN, -100000, 100000, INT_MAX})
        for (const int y : {INT_MIN, 0, INT_MAX})
            EXPECT_TRUE(same(drawn(font, text + "\n" + text, x, y), blank)) << x << "," << y;
}

/// The least box that covers every pixel which black text changes on white; letters at the edges of a text are dense.
TEST(Font, ExtentIsWhatTheTextTouches) {
    const Ko::Font font = sized(24);
    for (const char* const text : {"g", "Wg|", "  A\nlonger\ng", " \n "}) {
        Image im(Ko::PF_YCC444P);
        im.size(200, 120);
        test::fill(im, 255);
        const Ko::Bbox<int> box = font.getExtent(text, {20, 30});
        font.drawText(im, text, {20, 30}, {0, 0, 0});
        Image covered = im;
        Ko::drawBbox(covered, box, {255, 255, 255}, true);
        Image white = covered;
        test::fill(white, 255);
        EXPECT_TRUE(same(covered, white)) << text;
        for (const Ko::Bbox<int>& smaller : {Ko::Bbox<int>{box.left + 1, box.top, box.right, box.bottom},
                                             {box.left, box.top + 1, box.right, box.bottom},
                                             {box.left, box.top, box.right - 1, box.bottom},
                                             {box.left, box.top, box.right, box.bottom - 1}}) {
            covered = im;
            Ko::drawBbox(covered, smaller, {255, 255, 255}, true);
            EXPECT_EQ(same(covered, white), box.top == box.bottom) << text;
        }
    }
    EXPECT_EQ(Ko::Font().getExtent("A", {3, 4}), (Ko::Bbox<int>{3, 4, 3, 4}));
    EXPECT_EQ(font.getExtent("A", {INT_MAX, INT_MAX}).right, INT_MAX);
}

TEST(Font, BeforeInitAndAfterAMoveNothingIsDrawn) {
    static_assert(!std::is_copy_constructible_v<Ko::Font> && !std::is_copy_assignable_v<Ko::Font>, "");
    static_assert(std::is_nothrow_move_constructible_v<Ko::Font> && std::is_nothrow_move_assignable_v<Ko::Font>, "");
    const FreeTypeWatch watch;
    Ko::Font font;
    EXPECT_TRUE(same(drawn(font, "move"), blank));
    font.init(18);
    const Image want = drawn(font, "move");
    EXPECT_FALSE(same(want, blank));
    Ko::Font moved(std::move(font));
    EXPECT_TRUE(same(drawn(font, "move"), blank)); // NOLINT(bugprone-use-after-move)
    Ko::Font other = sized(9);
    other = std::move(moved);
    Ko::Font& alias = other;
    other = std::move(alias);
    EXPECT_EQ(watch.libraries(), 1);
    EXPECT_TRUE(same(drawn(other, "move"), want));
    font.init(18);
    EXPECT_TRUE(same(drawn(font, "move"), want));
}

TEST(Font, InitAgainReleasesTheFirst) {
    const FreeTypeWatch watch;
    {
        Ko::Font font = sized(30);
        const std::string small = corpus("small.ttf");
        font.init(small.data(), small.size(), 12);
        EXPECT_EQ(watch.libraries(), 1);
        const Image want = Oracle(12, small).drawn("AxA");
        EXPECT_TRUE(same(drawn(font, "AxA"), want));
        // What cannot be loaded leaves the glyphs that are there.
        EXPECT_EQ(failure([&] { font.init("no such file", 12); }), "[Font::init]: Cannot load font file.");
        EXPECT_TRUE(same(drawn(font, "AxA"), want));
    }
    EXPECT_EQ(watch.libraries(), 0);
    EXPECT_EQ(watch.blocks(), 0);
}

TEST(Font, LoadsFilesAndSaysWhatItCannot) {
    const Image want = drawn(sized(14), "same");
    Ko::Font font;
    font.init(KOVANTA_FONT_FILE, 14);
    EXPECT_TRUE(same(drawn(font, "same"), want));
    font.init("no such file", luximr_ttf, luximr_ttf_size, 14); // memory goes before the name
    EXPECT_TRUE(same(drawn(font, "same"), want));

    // The last one says that it is longer than it is.
    for (const char* name : {"", "/", "/dev/null", "/sys/kernel/uevent_seqnum"})
        EXPECT_EQ(failure([&] { font.init(name, 14); }), "[Font::init]: Cannot load font file.") << name;
    const std::string bitmaps = corpus("small.bdf");
    const std::string absurd = corpus("absurd.ttf"); // its glyphs are 50 times as large as its size
    const std::string file = "init]: Cannot load font file.", memory = "init]: Cannot load font from memory.";
    const std::tuple<const void*, unsigned long, unsigned int, std::string> cases[] = {
        {nullptr, 5, 14, file},
        {luximr_ttf, 0, 14, memory},
        {luximr_ttf, 1000, 14, memory},
        {luximr_ttf, ULONG_MAX, 14, memory},
        {"not a font", 10, 14, memory},
        {bitmaps.data(), bitmaps.size(), 77, "init]: FT_Set_Pixel_Sizes failed."},
        {absurd.data(), absurd.size(), 400, "renderChar]: FT_Glyph_To_Bitmap failed."}};
    for (const auto& c : cases)
        EXPECT_EQ(failure([&] { font.init(std::get<0>(c), std::get<1>(c), std::get<2>(c)); }),
                  "[Font::" + std::get<3>(c));
}

TEST(Font, AFileMayShrinkWhileItIsLoaded) {
    static const test::TempDirectory directory;
    static const std::string path = directory.write("shrinking.ttf", builtIn);
    const FreeTypeWatch watch;
    FreeTypeWatch::onAllocation = [] {
        std::filesystem::resize_file(path, 0);
    };
    Ko::Font font;
    font.init(path, 14);
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
    EXPECT_TRUE(same(drawn(font, "same"), drawn(sized(14), "same")));
}

TEST(Font, ReadyMadeBitmapsAreFullCoverage) {
    Image im(Ko::PF_YCC444P);
    im.size(12, 5);
    test::fill(im, 0);
    sized(10, corpus("small.bdf")).drawText(im, "A", {0, 4}, {255, 255, 255});
    const char* const picture[] = {"XXXXXXXXXXX.", "X.........X.", "X.X.X.X.X.X."};
    for (unsigned int y = 0; y < 3; ++y)
        for (unsigned int x = 0; x < 12; ++x)
            EXPECT_EQ(im.plane[0].view[y][x], picture[y][x] == 'X' ? 254 : 0) << x << "," << y;
}

/// Each refusal ends in one of the errors that a font in memory can have; what there is then is drawn, and nothing
/// held.
TEST(Font, EveryRefusedAllocationIsReportedAndLeaksNothing) {
    const std::string data = corpus("small.ttf");
    std::set<std::string> seen;
    long n = 0;
    for (bool refused = true; refused && !HasFailure();) {
        FreeTypeWatch watch;
        watch.refuse(++n);
        {
            Ko::Font font;
            seen.insert(failure([&] { font.init(data.data(), data.size(), 20); }));
            drawn(font, allCharacters + "\n" + allCharacters, -10, 20);
        }
        EXPECT_EQ(watch.blocks(), 0);
        refused = watch.refused();
    }
    EXPECT_GT(n, 300);
    seen.insert("[Font::init]: FT_Set_Pixel_Sizes failed."); // these two need not be among them
    seen.insert("[Font::renderChar]: FT_Load_Glyph failed.");
    EXPECT_THAT(seen, testing::UnorderedElementsAre(
                          "[Font::init]: FT_Init_FreeType failed.", "[Font::init]: Cannot load font from memory.",
                          "[Font::init]: FT_Set_Pixel_Sizes failed.", "[Font::renderChar]: FT_Load_Glyph failed.",
                          "[Font::renderChar]: FT_Get_Glyph failed.", "[Font::renderChar]: FT_Glyph_To_Bitmap failed.",
                          "nothing thrown"));
}

} // namespace
