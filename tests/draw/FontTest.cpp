#include "Kovanta/Font.h"

#include "draw/FreeTypeWatch.h"
#include "draw/SmallFonts.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Image = Ko::Image<unsigned char>;

constexpr Ko::YCCColor ink{235, 90, 170};

Image background(unsigned int w, unsigned int h, Ko::PIXEL_FORMAT format = Ko::PF_YCC444P) {
    Image im(format);
    im.size(w, h);
    for (unsigned int p = 0; p < 4; ++p)
        for (unsigned int y = 0; im.plane[p].rows && y < h; ++y)
            for (unsigned int x = 0; x < w; ++x)
                im.plane[p].view[y][x] = static_cast<unsigned char>(37 * x + 101 * y + 83 * p);
    return im;
}

bool same(const Image& a, const Image& b) {
    for (int p = 0; p < 4; ++p)
        for (unsigned int y = 0; a.plane[p].rows && y < a.plane[p].height; ++y)
            if (!std::equal(a.plane[p].view[y], a.plane[p].view[y] + a.plane[p].width, b.plane[p].view[y]))
                return false;
    return true;
}

/// Draws as documented, asking FreeType for each glyph anew and visiting each pixel alone.
class Oracle {
public:
    Oracle(const void* data, unsigned long size, unsigned int pixels)
        : pixelSize(pixels) {
        FT_Init_FreeType(&library);
        FT_New_Memory_Face(library, static_cast<const FT_Byte*>(data), static_cast<FT_Long>(size), 0, &face);
        FT_Set_Pixel_Sizes(face, pixels, 0);
    }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;
    ~Oracle() { FT_Done_FreeType(library); }

    FT_Face sheared() {
        FT_Matrix matrix{0x10a00, 0x2000, 0x3300, 0xf500};
        FT_Set_Transform(face, &matrix, nullptr);
        return face;
    }

    FT_GlyphSlot glyph(char c) {
        FT_Load_Glyph(face, FT_Get_Char_Index(face, static_cast<FT_ULong>(c)), FT_LOAD_RENDER);
        return face->glyph;
    }

    void draw(Image& im, const std::string& text, long x, long y, Ko::YCCColor c) {
        const long left = x;
        const long w = im.width;
        const long h = im.height;
        for (const char character : text) {
            if (character == '\n') {
                x = left;
                y += pixelSize;
                continue;
            }
            if (static_cast<signed char>(character) < 0)
                continue;
            const FT_GlyphSlot slot = glyph(character);
            const long columns = slot->bitmap.width;
            const long rows = slot->bitmap.rows;
            const long x0 = x + slot->bitmap_left;
            const long y0 = y - slot->bitmap_top;
            const bool overRight = x0 + columns > w;
            const bool overBottom = y0 + rows > h;
            for (long row = 0; row < rows; ++row)
                for (long column = 0; column < columns; ++column) {
                    const long px = x0 + column;
                    const long py = y0 + row;
                    if (px < 0 || py < 0 || px >= (overRight ? w - 1 : w) || py >= (overBottom ? h - 1 : h))
                        continue;
                    const unsigned int a = slot->bitmap.buffer[row * slot->bitmap.pitch + column];
                    const unsigned char color[3] = {c.y, c.cb, c.cr};
                    for (int p = 0; p < 3; ++p) {
                        unsigned char& s = im.plane[p].view[py][px];
                        s = static_cast<unsigned char>(((256 - a) * s + a * color[p]) >> 8);
                    }
                }
            x += (slot->advance.x * 1024 + 32768) >> 16; // 26.6 to 16.16 to whole pixels
            y += (slot->advance.y * 1024 + 32768) >> 16;
        }
    }

private:
    unsigned int pixelSize;
    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

Oracle builtIn(unsigned int pixels) {
    return {luximr_ttf, luximr_ttf_size, pixels};
}

template <class Action>
std::string failure(Action action) {
    try {
        action();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

const std::string allCharacters = [] {
    std::string text;
    for (int c = 0; c < 128; ++c)
        text += static_cast<char>(c);
    return text;
}();

TEST(Font, TheBuiltInFontIsTheFile) {
    std::ifstream in(KOVANTA_FONT_FILE, std::ios::binary);
    const std::string file{std::istreambuf_iterator<char>(in), {}};
    ASSERT_EQ(file.size(), 71784u);
    EXPECT_EQ(luximr_ttf_size, 71784u);
    EXPECT_TRUE(std::equal(file.begin(), file.end(), luximr_ttf,
                           [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; }));
    // And the file is the unmodified one: a TrueType file's words, head.checkSumAdjustment included, add up to this.
    std::uint32_t sum = 0;
    for (unsigned long i = 0; i < luximr_ttf_size; i += 4)
        sum += static_cast<std::uint32_t>(luximr_ttf[i]) << 24 | static_cast<std::uint32_t>(luximr_ttf[i + 1]) << 16 |
               static_cast<std::uint32_t>(luximr_ttf[i + 2]) << 8 | luximr_ttf[i + 3];
    EXPECT_EQ(sum, 0xB1B0AFBAu);
}

TEST(Font, EveryCharacterAtManySizesIsBitExact) {
    for (const unsigned int pixels : {0u, 1u, 5u, 9u, 12u, 20u, 33u, 64u}) {
        Ko::Font font;
        font.init(nullptr, 0, pixels);
        auto oracle = builtIn(std::max(1u, pixels));
        for (const auto format : {Ko::PF_YCC444P, Ko::PF_YCCA4444P}) {
            Image is = background(pixels * 50 + 40, 300, format);
            Image want = is;
            font.drawText(is, allCharacters, {3, 100}, ink);
            oracle.draw(want, allCharacters, 3, 100, ink);
            if (pixels != 0) { // size 0 is drawn as 1, but its lines lie on each other
                EXPECT_TRUE(same(is, want)) << pixels;
            }
        }
    }
}

TEST(Font, BrokenAdvancesAreRounded) {
    for (const unsigned int pixels : {10u, 11u, 12u, 13u, 17u}) {
        auto oracle = builtIn(pixels); // holds the library of the glyphs
        Ko::Font font;
        for (unsigned char c = 0; c < 128; ++c)
            font.renderChar(oracle.sheared(), c);
        Image is = background(400, 200);
        Image want = is;
        font.drawText(is, "sheared and climbing", {5, 40}, ink);
        oracle.draw(want, "sheared and climbing", 5, 40, ink);
        EXPECT_TRUE(same(is, want)) << pixels;
    }
}

TEST(Font, ClipsAtEveryEdge) {
    Ko::Font font;
    font.init(nullptr, 0, 16);
    auto oracle = builtIn(16);
    const Image blank = background(23, 19);
    for (int y = -8; y < 40; ++y)
        for (int x = -30; x < 30; ++x) {
            Image is = blank;
            Image want = blank;
            font.drawText(is, "gW\nA", {x, y}, ink);
            oracle.draw(want, "gW\nA", x, y, ink);
            ASSERT_TRUE(same(is, want)) << x << "," << y;
        }
}

TEST(Font, AGlyphThatCrossesAnEdgeLeavesTheLastLineAlone) {
    Ko::Font font;
    font.init(nullptr, 0, 24);
    auto oracle = builtIn(24);
    const FT_GlyphSlot slot = oracle.glyph('H');
    const int left = slot->bitmap_left;
    const int top = slot->bitmap_top;
    const auto w = slot->bitmap.width;
    const auto h = slot->bitmap.rows;
    const auto changed = [](const Image& im, unsigned int column, unsigned int row) {
        const Image before = background(im.width, im.height);
        bool any[2] = {false, false};
        for (unsigned int y = 0; y < im.height; ++y)
            any[0] = any[0] || im.plane[0].view[y][column] != before.plane[0].view[y][column];
        for (unsigned int x = 0; x < im.width; ++x)
            any[1] = any[1] || im.plane[0].view[row][x] != before.plane[0].view[row][x];
        return std::pair<bool, bool>(any[0], any[1]);
    };
    Image exact = background(w, h);
    font.drawText(exact, "H", {-left, top}, ink);
    EXPECT_EQ(changed(exact, w - 1, h - 1), std::make_pair(true, true));
    Image narrow = background(w - 1, h);
    font.drawText(narrow, "H", {-left, top}, ink);
    EXPECT_EQ(changed(narrow, w - 2, h - 1), std::make_pair(false, true));
    Image low = background(w, h - 1);
    font.drawText(low, "H", {-left, top}, ink);
    EXPECT_EQ(changed(low, w - 1, h - 2), std::make_pair(true, false));
}

TEST(Font, LineFeedsBlanksAndStrangeBytes) {
    Ko::Font font;
    font.init(nullptr, 0, 20);
    const auto draw = [&](const std::string& text, int x, int y) {
        Image im = background(200, 100);
        font.drawText(im, text, {x, y}, ink);
        return im;
    };
    const Image none = background(200, 100);
    EXPECT_TRUE(same(draw("", 10, 30), none));
    EXPECT_TRUE(same(draw("   \n ", 10, 30), none));
    std::string upper;
    for (int c = 128; c < 256; ++c)
        upper += static_cast<char>(c);
    EXPECT_TRUE(same(draw(upper, 10, 30), none));
    EXPECT_TRUE(same(draw("\xc3\xa4"
                          "A\xff"
                          "B",
                          10, 30),
                     draw("AB", 10, 30)));
    Image lines = draw("A", 10, 30);
    font.drawText(lines, "B", {10, 50}, ink);
    EXPECT_TRUE(same(draw("A\nB", 10, 30), lines));
    EXPECT_FALSE(same(draw(std::string(1, '\0'), 10, 30), none)) << "the missing glyph is drawn";
    EXPECT_TRUE(same(draw(" A", 10, 30), draw("A", 22, 30))) << "a blank advances by 12";
}

TEST(Font, FullCoverageIsOneShortOfTheColour) {
    Ko::Font font;
    font.init(nullptr, 0, 64);
    Image im(Ko::PF_YCC444P);
    im.size(60, 60);
    for (auto& plane : im.plane)
        for (unsigned int y = 0; plane.rows && y < 60; ++y)
            std::fill_n(plane.view[y], 60, static_cast<unsigned char>(16));
    font.drawText(im, "H", {0, 50}, {235, 128, 128});
    unsigned char brightest = 0;
    for (unsigned int y = 0; y < 60; ++y)
        brightest = std::max(brightest, *std::max_element(im.plane[0].view[y], im.plane[0].view[y] + 60));
    EXPECT_EQ(brightest, 234);
}

TEST(Font, FarAwayPensDrawNothing) {
    Ko::Font font;
    font.init(nullptr, 0, 20);
    const Image none = background(50, 40);
    const std::string text(400, 'W');
    for (const int x : {INT_MIN, -100000, 100000, INT_MAX})
        for (const int y : {INT_MIN, 0, INT_MAX}) {
            Image im = none;
            font.drawText(im, text + "\n" + text, {x, y}, ink);
            EXPECT_TRUE(same(im, none)) << x << "," << y;
        }
}

TEST(Font, ImagesWithoutRoomAreLeftAlone) {
    Ko::Font font;
    font.init(nullptr, 0, 20);
    Image empty(Ko::PF_YCC444P);
    font.drawText(empty, "text", {0, 15}, ink);
    for (const auto& s : {std::pair<unsigned, unsigned>{0, 9}, {9, 0}, {1, 1}, {1, 30}, {30, 1}}) {
        Image im(Ko::PF_YCC444P);
        im.size(s.first, s.second);
        font.drawText(im, "text", {-5, 15}, ink);
    }
    // Not a format for text, but no reason to leave its memory.
    for (const auto format : {Ko::PF_YCC420P, Ko::PF_RGB, Ko::PF_Y, Ko::PF_JFIF422P}) {
        Image im(format);
        im.size(40, 30);
        font.drawText(im, "text", {0, 15}, ink);
    }
}

TEST(Font, BeforeInitAndAfterAMoveNothingIsDrawn) {
    static_assert(!std::is_copy_constructible_v<Ko::Font> && !std::is_copy_assignable_v<Ko::Font>, "");
    static_assert(std::is_nothrow_move_constructible_v<Ko::Font> && std::is_nothrow_move_assignable_v<Ko::Font>, "");
    const Image none = background(60, 30);
    const auto draw = [&](const Ko::Font& font) {
        Image im = none;
        font.drawText(im, "move", {2, 20}, ink);
        return im;
    };
    const FreeTypeWatch watch;
    Ko::Font font;
    EXPECT_TRUE(same(draw(font), none));
    font.init(nullptr, 0, 18);
    const Image want = draw(font);
    EXPECT_FALSE(same(want, none));
    Ko::Font moved(std::move(font));
    EXPECT_TRUE(same(draw(moved), want));
    EXPECT_TRUE(same(draw(font), none)); // NOLINT(bugprone-use-after-move)
    Ko::Font other;
    other.init(nullptr, 0, 9);
    other = std::move(moved);
    EXPECT_EQ(watch.libraries(), 1);
    EXPECT_TRUE(same(draw(other), want));
    Ko::Font& alias = other;
    other = std::move(alias);
    EXPECT_TRUE(same(draw(other), want));
    font.init(nullptr, 0, 18);
    EXPECT_TRUE(same(draw(font), want));
}

TEST(Font, InitAgainReleasesTheFirst) {
    const FreeTypeWatch watch;
    {
        Ko::Font font;
        font.init(nullptr, 0, 30);
        const std::string small = smallTrueType();
        font.init(small.data(), small.size(), 12);
        EXPECT_EQ(watch.libraries(), 1);
        Image is = background(60, 30);
        Image want = is;
        font.drawText(is, "AxA", {5, 20}, ink);
        Oracle(small.data(), small.size(), 12).draw(want, "AxA", 5, 20, ink);
        EXPECT_TRUE(same(is, want));
        EXPECT_FALSE(same(is, background(60, 30)));

        // What cannot be loaded leaves the glyphs that are there.
        EXPECT_EQ(failure([&] { font.init("no such file", 12); }), "[Font::init]: Cannot load font file.");
        Image again = background(60, 30);
        font.drawText(again, "AxA", {5, 20}, ink);
        EXPECT_TRUE(same(again, want));
    }
    EXPECT_EQ(watch.libraries(), 0);
    EXPECT_EQ(watch.blocks(), 0);
}

TEST(Font, LoadsFilesAndSaysWhatItCannot) {
    Ko::Font font;
    font.init(KOVANTA_FONT_FILE, 14);
    Ko::Font builtInFont;
    builtInFont.init(nullptr, 0, 14);
    Image a = background(100, 30);
    Image b = a;
    font.drawText(a, "same", {3, 20}, ink);
    builtInFont.drawText(b, "same", {3, 20}, ink);
    EXPECT_TRUE(same(a, b));

    const std::string file = "[Font::init]: Cannot load font file.";
    const std::string memory = "[Font::init]: Cannot load font from memory.";
    EXPECT_EQ(failure([&] { font.init("", 14); }), file);
    EXPECT_EQ(failure([&] { font.init("/", 14); }), file);
    EXPECT_EQ(failure([&] { font.init("/dev/null", 14); }), file);
    EXPECT_EQ(failure([&] { font.init(nullptr, 5, 14); }), file);
    EXPECT_EQ(failure([&] { font.init("x", 0, 0, 14); }), file);
    EXPECT_EQ(failure([&] { font.init(luximr_ttf, 0, 14); }), memory);
    EXPECT_EQ(failure([&] { font.init(luximr_ttf, 1000, 14); }), memory);
    EXPECT_EQ(failure([&] { font.init(luximr_ttf, ULONG_MAX, 14); }), memory);
    EXPECT_EQ(failure([&] { font.init("not a font", 10, 14); }), memory);
    // Memory goes before the name.
    font.init("no such file", luximr_ttf, luximr_ttf_size, 14);

    const std::string bitmaps = smallBitmapFont();
    EXPECT_EQ(failure([&] { font.init(bitmaps.data(), bitmaps.size(), 77); }),
              "[Font::init]: FT_Set_Pixel_Sizes failed.");
}

TEST(Font, ReadyMadeBitmapsAreFullCoverage) {
    const std::string bitmaps = smallBitmapFont();
    Ko::Font font;
    font.init(bitmaps.data(), bitmaps.size(), 10);
    Image im(Ko::PF_YCC444P);
    im.size(12, 5);
    for (auto& plane : im.plane)
        for (unsigned int y = 0; plane.rows && y < 5; ++y)
            std::fill_n(plane.view[y], 12, static_cast<unsigned char>(0));
    font.drawText(im, "A", {0, 4}, {255, 255, 255});
    const char* const picture[] = {"XXXXXXXXXXX.", "X.........X.", "X.X.X.X.X.X."};
    for (unsigned int y = 0; y < 3; ++y)
        for (unsigned int x = 0; x < 12; ++x)
            EXPECT_EQ(im.plane[0].view[y][x], picture[y][x] == 'X' ? 254 : 0) << x << "," << y;
}

const std::string texts[] = {
    "[Font::init]: FT_Init_FreeType failed.",   "[Font::init]: Cannot load font from memory.",
    "[Font::init]: FT_Set_Pixel_Sizes failed.", "[Font::renderChar]: FT_Load_Glyph failed.",
    "[Font::renderChar]: FT_Get_Glyph failed.", "[Font::renderChar]: FT_Glyph_To_Bitmap failed.",
};

bool known(const std::string& text) {
    return std::find(std::begin(texts), std::end(texts), text) != std::end(texts);
}

TEST(Font, EveryRefusedAllocationIsReportedAndLeaksNothing) {
    const std::string small = smallTrueType();
    std::vector<std::string> seen;
    long allocations = 0;
    for (long n = 1;; ++n) {
        FreeTypeWatch watch;
        watch.refuse(n);
        std::string text;
        {
            Ko::Font font;
            text = failure([&] { font.init(small.data(), small.size(), 20); });
            Image im = background(300, 40); // a partly filled cache draws what it has
            font.drawText(im, allCharacters, {3, 30}, ink);
        }
        ASSERT_EQ(watch.blocks(), 0) << n;
        if (!watch.refused())
            break;
        allocations = n;
        EXPECT_TRUE(text.empty() || known(text)) << text;
        if (std::find(seen.begin(), seen.end(), text) == seen.end())
            seen.push_back(text);
    }
    EXPECT_GT(allocations, 300);
    for (const int i : {0, 1, 4, 5})
        EXPECT_NE(std::find(seen.begin(), seen.end(), texts[i]), seen.end()) << texts[i];
}

TEST(Font, GlyphsOfAbsurdSizeAreRefused) {
    const std::string absurd = smallTrueType(16); // 50 times as large as its size
    Ko::Font font;
    EXPECT_EQ(failure([&] { font.init(absurd.data(), absurd.size(), 400); }), texts[5]);
}

void damage(const std::string& font, std::size_t step, unsigned int pixels) {
    int refused = 0;
    int drawn = 0;
    for (std::size_t i = 0; i < font.size(); i += step)
        for (const int flip : {0xff, 0x80, 0x01}) {
            std::string bad = font;
            bad[i] = static_cast<char>(bad[i] ^ flip);
            FreeTypeWatch watch;
            {
                Ko::Font target;
                const std::string text = failure([&] { target.init(bad.data(), bad.size(), pixels); });
                EXPECT_TRUE(text.empty() || known(text)) << text;
                (text.empty() ? drawn : refused) += 1;
                Image im = background(70, 50);
                target.drawText(im, allCharacters + "\n" + allCharacters, {-10, 20}, ink);
            }
            ASSERT_EQ(watch.blocks(), 0) << i;
        }
    EXPECT_GT(refused, 0);
    EXPECT_GT(drawn, 0);
}

TEST(Font, EveryDamagedByteOfASmallFontIsHarmless) {
    damage(smallTrueType(), 1, 20);
    damage(smallBitmapFont(), 1, 10);
}

TEST(Font, DamagedBytesOfTheBuiltInFontAreHarmless) {
    damage(std::string(reinterpret_cast<const char*>(luximr_ttf), luximr_ttf_size), 149, 10);
}

} // namespace
