// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Font.h"

#include "draw/Canvas.h"
#include "draw/FontFile.h"
#include "draw/Glyph.h"
#include "draw/TextBlend.h"
#include "util/Errors.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace Ko {

namespace {

constexpr unsigned int characters = 128;

/// A FreeType advance, 16.16, in whole pixels.
std::int64_t rounded(FT_Pos advance) {
    return (std::int64_t{advance} + 32768) >> 16;
}

int saturated(std::int64_t coordinate) {
    return static_cast<int>(
        std::clamp<std::int64_t>(coordinate, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// The first sample of the glyph that shows, and the pixels it covers from there on.
struct Extent {
    std::int64_t skipped;
    std::int64_t first;
    std::int64_t end;

    /// An end beyond the image is cut to one short of the edge, not to the edge.
    Extent(std::int64_t position, std::int64_t length, std::int64_t limit)
        : skipped(std::max<std::int64_t>(0, -position))
        , first(std::max<std::int64_t>(0, position))
        , end(position + length > limit ? limit - 1 : position + length) {}
};

void drawGlyph(const Canvas& canvas, const FT_BitmapGlyphRec_& glyph, std::int64_t penX, std::int64_t penY,
               YCCColor color) {
    const std::int64_t width = glyph.bitmap.width;
    const Extent x(penX + glyph.left, width, canvas.width);
    const Extent y(penY - glyph.top, glyph.bitmap.rows, canvas.height);
    if (x.first >= x.end)
        return;
    for (std::int64_t row = y.first; row < y.end; ++row)
        blendText(canvas.planes[0][row] + x.first, canvas.planes[1][row] + x.first, canvas.planes[2][row] + x.first,
                  glyph.bitmap.buffer + (y.skipped + row - y.first) * width + x.skipped,
                  static_cast<std::size_t>(x.end - x.first), color);
}

} // namespace

struct Font::Impl {
    LibraryPtr library;           // before the glyphs, which it has to outlive
    std::vector<GlyphPtr> glyphs; // the index is the character code
    unsigned int pixelSize = 0;

    void renderChar(FT_Face face, unsigned char code) { glyphs.push_back(renderGlyph(face, code)); }

    /// Calls @p visit(glyph, x, y) with the pen of each character that has a glyph.
    template <class Visit>
    void place(const std::string& text, Point<int> pen, Visit visit) const {
        std::int64_t x = pen.x;
        std::int64_t y = pen.y;
        for (const char character : text) {
            if (character == '\n') {
                x = pen.x;
                y += pixelSize;
                continue;
            }
            const auto code = static_cast<unsigned char>(character);
            if (code >= characters || code >= glyphs.size())
                continue;
            const FT_Glyph glyph = glyphs[code].get();
            visit(*reinterpret_cast<FT_BitmapGlyph>(glyph), x, y);
            x += rounded(glyph->advance.x);
            y += rounded(glyph->advance.y);
        }
    }
};

Font::Font() = default;
Font::Font(Font&& other) noexcept = default;
Font& Font::operator=(Font&& other) noexcept = default;
Font::~Font() = default;

void Font::init(unsigned int size) {
    init(std::string(), luximr_ttf, luximr_ttf_size, size);
}

void Font::init(const std::string& file, unsigned int size) {
    init(file, nullptr, 0, size);
}

void Font::init(const void* data, unsigned long size, unsigned int pixels) {
    if (!data && size == 0)
        init(pixels);
    else
        init(std::string(), data, size, pixels);
}

void Font::init(const std::string& file, const void* data, unsigned long size, unsigned int pixels) {
    if (!impl)
        impl = std::make_unique<Impl>();
    impl->pixelSize = pixels;
    FT_Library opened = nullptr;
    if (FT_Init_FreeType(&opened) != 0)
        throwRuntimeError("Font::init", "FT_Init_FreeType failed.");
    LibraryPtr library(opened);

    std::optional<FontFile> read; // needed for as long as the face
    if (!data) {
        read.emplace(file);
        if (!read->bytes)
            throwRuntimeError("Font::init", "Cannot load font file.");
    }
    const void* const bytes = data ? data : read->bytes.get();
    const unsigned long length = data ? size : read->size;
    FT_Face loaded = nullptr;
    if (length > static_cast<unsigned long>(std::numeric_limits<FT_Long>::max()) ||
        FT_New_Memory_Face(opened, static_cast<const FT_Byte*>(bytes), static_cast<FT_Long>(length), 0, &loaded) != 0)
        throwRuntimeError("Font::init", data ? "Cannot load font from memory." : "Cannot load font file.");
    const FacePtr face(loaded);
    if (FT_Set_Pixel_Sizes(loaded, pixels, 0) != 0)
        throwRuntimeError("Font::init", "FT_Set_Pixel_Sizes failed.");

    impl->glyphs.reserve(characters);
    impl->glyphs.clear();
    impl->library = std::move(library);
    for (unsigned int code = 0; code < characters; ++code)
        impl->renderChar(loaded, static_cast<unsigned char>(code));
}

void Font::renderChar(FT_FaceRec_* face, unsigned char code) {
    if (!impl)
        impl = std::make_unique<Impl>();
    impl->renderChar(face, code);
}

void Font::drawText(Image<>& im, const std::string& text, Point<int> pen, YCCColor color) const {
    if (!impl)
        return;
    const Canvas canvas(im);
    impl->place(text, pen, [&](const FT_BitmapGlyphRec_& glyph, std::int64_t x, std::int64_t y) {
        drawGlyph(canvas, glyph, x, y, color);
    });
}

Bbox<int> Font::getExtent(const std::string& text, Point<int> pen) const {
    std::optional<Bbox<std::int64_t>> box; // right and bottom excluded
    if (impl)
        impl->place(text, pen, [&](const FT_BitmapGlyphRec_& glyph, std::int64_t x, std::int64_t y) {
            const std::int64_t left = x + glyph.left;
            const std::int64_t top = y - glyph.top;
            const Bbox<std::int64_t> own{left, top, left + glyph.bitmap.width, top + glyph.bitmap.rows};
            if (own.left == own.right || own.top == own.bottom)
                return;
            if (!box)
                box = own;
            *box = {std::min(box->left, own.left), std::min(box->top, own.top), std::max(box->right, own.right),
                    std::max(box->bottom, own.bottom)};
        });
    if (!box)
        return {pen.x, pen.y, pen.x, pen.y};
    return {saturated(box->left), saturated(box->top), saturated(box->right - 1), saturated(box->bottom)};
}

} // namespace Ko
