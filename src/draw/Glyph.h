// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_DRAW_GLYPH_H
#define KOVANTA_SRC_DRAW_GLYPH_H

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_GLYPH_H

#include <memory>
#include <type_traits>

namespace Ko {

struct FreeTypeDeleter {
    void operator()(FT_Library library) const noexcept { FT_Done_FreeType(library); }
    void operator()(FT_Face face) const noexcept { FT_Done_Face(face); }
    void operator()(FT_Glyph glyph) const noexcept { FT_Done_Glyph(glyph); }
};

using LibraryPtr = std::unique_ptr<std::remove_pointer_t<FT_Library>, FreeTypeDeleter>;
using FacePtr = std::unique_ptr<std::remove_pointer_t<FT_Face>, FreeTypeDeleter>;
using GlyphPtr = std::unique_ptr<std::remove_pointer_t<FT_Glyph>, FreeTypeDeleter>;

/// The bitmap of one character: one coverage byte a pixel, rows without padding.
/// @throws std::runtime_error with the texts of Font::renderChar()
GlyphPtr renderGlyph(FT_Face face, unsigned char code);

} // namespace Ko

#endif
