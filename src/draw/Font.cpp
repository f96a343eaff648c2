#include "Kovanta/Font.h"

#include "draw/Glyph.h"
#include "draw/Line.h"
#include "draw/TextBlend.h"
#include "util/Errors.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace Ko {

namespace {

constexpr unsigned int characters = 128;

/// A FreeType advance, 16.16, in whole pixels.
std::int64_t rounded(FT_Pos advance) {
    return (std::int64_t{advance} + 32768) >> 16;
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

Font::Font() = default;

Font::Font(Font&& other) noexcept
    : glyphs(std::move(other.glyphs))
    , pixelSize(std::exchange(other.pixelSize, 0))
    , library(std::exchange(other.library, nullptr)) {
    other.glyphs.clear();
}

Font& Font::operator=(Font&& other) noexcept {
    Font taken(std::move(other));
    glyphs.swap(taken.glyphs);
    std::swap(pixelSize, taken.pixelSize);
    std::swap(library, taken.library);
    return *this;
}

Font::~Font() {
    release();
}

void Font::release() noexcept {
    for (FT_BitmapGlyph glyph : glyphs)
        FT_Done_Glyph(&glyph->root);
    glyphs.clear();
    if (library)
        FT_Done_FreeType(library);
    library = nullptr;
}

void Font::init(const std::string& file, unsigned int size) {
    init(file, nullptr, 0, size);
}

void Font::init(const void* data, unsigned long size, unsigned int pixels) {
    if (!data && size == 0)
        init(std::string(), luximr_ttf, luximr_ttf_size, pixels);
    else
        init(std::string(), data, size, pixels);
}

void Font::init(const std::string& file, const void* data, unsigned long size, unsigned int pixels) {
    pixelSize = pixels;
    FT_Library opened = nullptr;
    if (FT_Init_FreeType(&opened) != 0)
        throwRuntimeError("Font::init", "FT_Init_FreeType failed.");
    LibraryPtr fresh(opened);

    FT_Face loaded = nullptr;
    if (data) {
        const bool fits = size <= static_cast<unsigned long>(std::numeric_limits<FT_Long>::max());
        if (!fits ||
            FT_New_Memory_Face(opened, static_cast<const FT_Byte*>(data), static_cast<FT_Long>(size), 0, &loaded) != 0)
            throwRuntimeError("Font::init", "Cannot load font from memory.");
    } else if (FT_New_Face(opened, file.c_str(), 0, &loaded) != 0)
        throwRuntimeError("Font::init", "Cannot load font file.");
    const FacePtr face(loaded);
    if (FT_Set_Pixel_Sizes(loaded, pixels, 0) != 0)
        throwRuntimeError("Font::init", "FT_Set_Pixel_Sizes failed.");

    glyphs.reserve(characters);
    release();
    library = fresh.release();
    for (unsigned int code = 0; code < characters; ++code)
        renderChar(loaded, static_cast<unsigned char>(code));
}

void Font::renderChar(FT_FaceRec_* face, unsigned char code) {
    GlyphPtr glyph = renderGlyph(face, code);
    glyphs.push_back(reinterpret_cast<FT_BitmapGlyph>(glyph.get()));
    static_cast<void>(glyph.release()); // the cache owns it now
}

void Font::drawText(Image<unsigned char>& im, const std::string& text, Point<int> pen, YCCColor color) const {
    const Canvas canvas(im);
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
        const FT_BitmapGlyph glyph = glyphs[code];
        drawGlyph(canvas, *glyph, x, y, color);
        x += rounded(glyph->root.advance.x);
        y += rounded(glyph->root.advance.y);
    }
}

} // namespace Ko
