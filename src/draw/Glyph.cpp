// SPDX-License-Identifier: BSD-2-Clause
#include "draw/Glyph.h"
#include "util/Errors.h"

#include FT_BITMAP_H

#include <algorithm>
#include <cstddef>

namespace Ko {

namespace {

/// A corrupt font can scale a few points to gigabytes of bitmap; no character is that many times its font's size.
bool plausible(FT_Face face, FT_Glyph glyph) {
    constexpr FT_Pos sizes = 16;
    constexpr FT_Pos slack = 64;
    const FT_Size_Metrics& metrics = face->size->metrics;
    const FT_Pos limit = sizes * std::max(metrics.x_ppem, metrics.y_ppem) + slack;
    FT_BBox box;
    FT_Glyph_Get_CBox(glyph, FT_GLYPH_BBOX_PIXELS, &box);
    return box.xMax - box.xMin <= limit && box.yMax - box.yMin <= limit;
}

/// Outlines come out of the renderer as coverage bytes without padding, but a font can also hold ready-made bitmaps,
/// with several pixels in a byte or padded rows.
bool normalize(FT_Library library, FT_Bitmap& bitmap) {
    const bool empty = bitmap.width == 0 || bitmap.rows == 0;
    const bool plain = bitmap.pixel_mode == FT_PIXEL_MODE_GRAY && bitmap.num_grays == 256 && bitmap.pitch >= 0 &&
                       static_cast<unsigned int>(bitmap.pitch) == bitmap.width;
    if (empty || plain)
        return true;
    FT_Bitmap grey{};
    if (FT_Bitmap_Convert(library, &bitmap, &grey, 1) != 0 || grey.pitch < 0 ||
        static_cast<unsigned int>(grey.pitch) != grey.width || grey.num_grays < 2) {
        FT_Bitmap_Done(library, &grey);
        return false;
    }
    const unsigned int full = grey.num_grays - 1u;
    const std::size_t size = std::size_t{grey.width} * grey.rows;
    if (full != 255)
        for (std::size_t i = 0; i < size; ++i)
            grey.buffer[i] = static_cast<unsigned char>(grey.buffer[i] * 255u / full);
    FT_Bitmap_Done(library, &bitmap);
    bitmap = grey;
    return true;
}

} // namespace

GlyphPtr renderGlyph(FT_Face face, unsigned char code) {
    if (FT_Load_Glyph(face, FT_Get_Char_Index(face, code), FT_LOAD_DEFAULT) != 0)
        throwRuntimeError("Font::renderChar", "FT_Load_Glyph failed.");
    FT_Glyph taken = nullptr;
    if (FT_Get_Glyph(face->glyph, &taken) != 0)
        throwRuntimeError("Font::renderChar", "FT_Get_Glyph failed.");
    GlyphPtr glyph(taken);
    // On failure the outline stays; otherwise the bitmap takes its place.
    if (!plausible(face, taken) || FT_Glyph_To_Bitmap(&taken, FT_RENDER_MODE_NORMAL, nullptr, 0) != 0)
        throwRuntimeError("Font::renderChar", "FT_Glyph_To_Bitmap failed.");
    if (taken != glyph.get())
        glyph.reset(taken);
    if (glyph->format != FT_GLYPH_FORMAT_BITMAP ||
        !normalize(glyph->library, reinterpret_cast<FT_BitmapGlyph>(glyph.get())->bitmap))
        throwRuntimeError("Font::renderChar", "FT_Glyph_To_Bitmap failed.");
    return glyph;
}

} // namespace Ko
