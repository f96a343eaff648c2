# Turns a font file into a C++ source that defines it as an array: cmake -DINPUT=... -DOUTPUT=... -P EmbedFont.cmake
file(READ ${INPUT} bytes HEX)
string(LENGTH "${bytes}" digits)
math(EXPR size "${digits} / 2")
string(REGEX REPLACE "(..)(..)(..)(..)(..)(..)(..)(..)" "0x\\1,0x\\2,0x\\3,0x\\4,0x\\5,0x\\6,0x\\7,0x\\8,\n" lines "${bytes}")
file(WRITE ${OUTPUT} "// Made from the font file by the build.
#include \"Kovanta/Font.h\"

const unsigned char luximr_ttf[${size}] = {
${lines}};
const unsigned long luximr_ttf_size = sizeof luximr_ttf;
")
