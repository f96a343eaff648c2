// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FONT_H
#define KOVANTA_FONT_H

#include "Kovanta/Draw.h"
#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

#include <memory>
#include <string>

/// @addtogroup drawing
/// @{

struct FT_FaceRec_; // what FT_Face points to; renderChar() takes one

/// The built-in font: the TrueType file of Luxi Mono Regular.
extern KOVANTA_API const unsigned char luximr_ttf[];
/// Its length in bytes, 71784.
extern KOVANTA_API const unsigned long luximr_ttf_size;

/// @}

namespace Ko {

/// @addtogroup drawing
/// @{

/// Draws 7-bit text into planar Y'CbCr images.
///
/// init() rasterises the characters 0 to 127 of a font once, at one size; drawText() then only blends the stored
/// glyphs, without allocating. A font that was not initialised draws nothing.
///
/// Font files may come from strangers: one that is damaged ends in a font or an exception. A character that would take
/// more than 16 times the font's size in either direction (and 64 pixels) is refused, as a few bytes can ask for
/// gigabytes that way.
///
/// Fonts move but do not copy; a moved-from font is as default-constructed. drawText() may run in several threads on
/// one font for different images; everything else is one thread at a time per object. Different fonts are independent.
class KOVANTA_API Font {
public:
    Font();
    Font(const Font&) = delete;
    /// Takes the other's glyphs.
    Font(Font&& other) noexcept;
    Font& operator=(const Font&) = delete;
    /// Releases its own glyphs and takes the other's.
    Font& operator=(Font&& other) noexcept;
    ~Font();

    /// Loads the built-in font.
    /// @param pixelSize the nominal size in pixels, also the distance of two lines
    /// @throws std::runtime_error as init() from memory; std::bad_alloc
    void init(unsigned int pixelSize);

    /// Loads a font file in any format that FreeType reads. The file is read whole before it is looked at, so that it
    /// may shrink or go meanwhile; one of more than 1 GiB is none.
    /// @param file its name
    /// @param pixelSize the nominal size in pixels, also the distance of two lines
    /// @throws std::runtime_error "[Font::init]: FT_Init_FreeType failed.", "[Font::init]: Cannot load font file.",
    ///         "[Font::init]: FT_Set_Pixel_Sizes failed.", and what renderChar() throws; std::bad_alloc
    ///
    /// A font may be initialised again. When the new font cannot be loaded or sized, the earlier glyphs stay (only the
    /// distance of lines is the new one already); when one of its characters fails, those before it are there.
    void init(const std::string& file, unsigned int pixelSize);

    /// Loads a font from memory, which is needed during the call only. A null @p data with a @p size of 0 selects the
    /// built-in font.
    /// @param data the first byte of a font file
    /// @param size in bytes
    /// @param pixelSize the nominal size in pixels, also the distance of two lines
    /// @throws as the first, with "[Font::init]: Cannot load font from memory." for a block that is no font
    void init(const void* data, unsigned long size, unsigned int pixelSize);

    /// Loads a font from memory, or from the file when @p data is null.
    /// @throws as the others
    void init(const std::string& file, const void* data, unsigned long size, unsigned int pixelSize);

    /// Renders one character of a sized face and appends it to the cache, whose index is the character code; init()
    /// does so for all of them. The glyph belongs to the library of @p face, which must outlive this font. A character
    /// that the font lacks becomes its missing-glyph shape.
    /// @throws std::runtime_error "[Font::renderChar]: FT_Load_Glyph failed.",
    ///         "[Font::renderChar]: FT_Get_Glyph failed.",
    ///         "[Font::renderChar]: FT_Glyph_To_Bitmap failed.", also for a character of absurd size
    /// @throws std::bad_alloc
    void renderChar(FT_FaceRec_* face, unsigned char code);

    /// Draws text, clipped to the image: a glyph that crosses the right or bottom edge leaves the last column or row
    /// untouched. A line feed moves the pen down by the pixel size and back to the starting x. Bytes of 128 and above
    /// draw nothing and do not advance the pen.
    /// @param im PF_YCC444P or PF_YCCA4444P (alpha is left alone); the format is not checked
    /// @param text in 7-bit characters
    /// @param pen left end of the baseline, in pixels
    /// @param color of a pixel that a glyph covers wholly
    void drawText(Image<>& im, const std::string& text, Point<int> pen, YCCColor color) const;

    /// The box of all that drawText() touches with the same text and pen, when no edge of an image is in the way:
    /// `drawBbox(im, font.getExtent(text, pen), color, true)` is a ground for a label. As drawBbox() has it, the row
    /// `bottom` is the first one below the text. Text that touches nothing has a box that fills nothing, at the pen.
    /// @param text in 7-bit characters
    /// @param pen left end of the baseline, in pixels
    Bbox<int> getExtent(const std::string& text, Point<int> pen) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl; // null until the first init() or renderChar()
};

/// @}

} // namespace Ko

#endif
