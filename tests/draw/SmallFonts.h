#ifndef KOVANTA_TESTS_DRAW_SMALLFONTS_H
#define KOVANTA_TESTS_DRAW_SMALLFONTS_H

#include <string>

/// A TrueType font of some 600 bytes, small enough to damage every one of them: a missing-glyph box, and for 'A' a
/// triangle that reaches left of its origin and below the baseline. Every other character is missing.
std::string smallTrueType(int unitsPerEm = 1000);

/// A bitmap font, 10 pixels high: 'A' is 11 pixels wide, one bit each, so its rows take two bytes.
std::string smallBitmapFont();

#endif
