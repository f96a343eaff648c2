# SPDX-License-Identifier: BSD-2-Clause
# Turns a font file into a C++ source that defines it as an array: cmake -DINPUT=... -DOUTPUT=... -P EmbedFont.cmake
file(READ ${INPUT} bytes HEX)
string(LENGTH "${bytes}" digits)
math(EXPR size "${digits} / 2")
string(REGEX REPLACE "(..)" "0x\\1," array "${bytes}")
# One more byte, as an array of none is no C++.
file(WRITE ${OUTPUT} "// Made from the font file by the build.
#include \"Kovanta/Font.h\"

const unsigned char luximr_ttf[] = {${array}0};
const unsigned long luximr_ttf_size = ${size};
")
