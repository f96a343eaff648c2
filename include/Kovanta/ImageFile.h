// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_IMAGEFILE_H
#define KOVANTA_IMAGEFILE_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"
#include "Kovanta/Rotate.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Ko {

/// @addtogroup stills
/// @{

/// How many pixels of a JPEG file share a chroma sample.
enum ChromaSampling : unsigned int {
    CS_420, ///< Two by two.
    CS_422, ///< Two across.
    CS_444  ///< None: each has its own.
};

/// @name Still-image files
///
/// Readers fill the caller's image in the pixel format that it has, and size it; writers take any source that
/// convertIm() turns into the file's format. Files hold 8-bit samples. PF_YCC444P goes in and out everywhere:
///
/// | file | read from it | written as |
/// |---|---|---|
/// | PPM | PF_RGB | PF_RGB |
/// | PGM | PF_Y | PF_Y |
/// | JPEG | PF_JFIF, or PF_Y when it is grey | PF_JFIF, quality 100 |
/// | PNG | PF_RGB, PF_RGBA or PF_Y | PF_RGB |
///
/// Thread-safe as long as no two calls share an image, or a file that one of them writes.
///
/// Errors of all of them:
/// - std::runtime_error "[function]: Cannot open NAME: REASON." with the system's reason, also for a directory and for
///   a name that holds a zero byte;
/// - std::runtime_error "[readPpmImage]: Image too large." (or its like) for a file whose picture passes
///   2^32 - 1 bytes, 2^28 rows or setMaxImagePixels(), before any memory is taken for it;
/// - std::runtime_error "[writePpmImage]: Cannot write NAME: REASON." (or its like) when the system refuses a write,
///   for a full disk say; the file then holds its beginning;
/// - std::logic_error of convertIm() where there is no conversion between the file's format and the image's;
/// - std::bad_alloc.
///
/// An image to be read into stays as it was on every exception, except that a refused conversion leaves it resized.
/// Writers of JPEG and PNG leave a file as it was when they refuse the image; the file is made when it was not there.
/// Programs that other threads start inherit none of the files.
/// @{

/// Sets the most pixels that the readers take, of any file and in all threads: larger pictures are refused as too large
/// before they cost memory. For applications that read what strangers send.
/// @param pixels width times height; 0, as at the start, is no limit
KOVANTA_API void setMaxImagePixels(std::uint64_t pixels);

/// Reads a still, by the file name's extension: .pgm, .ppm, .png, .jpeg or .jpg in any case. Contents are not looked
/// at.
/// @throws std::logic_error "[readImage]: Cannot read NAME: extension not recognized.", std::out_of_range for a name
///         without a dot; otherwise as the reader of the format
KOVANTA_API void readImage(Image<>& im, const std::string& name);
/// Writes a still in the format that the file name's extension says; the extensions are those of readImage().
/// @throws std::logic_error "[writeImage]: Cannot write NAME: extension not recognized.", std::out_of_range for a name
///         without a dot; otherwise as the writer of the format
KOVANTA_API void writeImage(const std::string& name, const Image<>& im);

/// Reads a still from memory, which may come from a queue or a network: what the bytes say that it is, a PPM, PGM, PNG
/// or JPEG file. The bytes are needed during the call only.
/// @param im takes the picture, in the format that it has
/// @param data the first byte of a file; may be null when @p size is 0
/// @param size in bytes
/// @throws std::runtime_error "[readImage]: No known still."; otherwise as the reader of the format, but that a comment
///         without a line feed ends with the bytes
KOVANTA_API void readImage(Image<>& im, const void* data, std::size_t size);
/// Writes a still into memory: the bytes that the writer of the format would put into a file.
/// @param bytes replaced when all went well, else left as they were
/// @param im any image that converts into the format
/// @param extension ".ppm", ".pgm", ".png", ".jpg" or ".jpeg", in any case
/// @throws std::logic_error "[writeImage]: Cannot write EXTENSION: extension not recognized."; otherwise as the writer
KOVANTA_API void writeImage(std::vector<unsigned char>& bytes, const Image<>& im, const std::string& extension);

/// How a still is to be turned for the eye, which is what rotate() takes: cameras leave the samples as the sensor
/// stood, and so do the readers. It is the orientation in a JPEG's or PNG's EXIF data; OR_UPRIGHT where there is none
/// or no valid one, where the contents are not those of such a file, and for PPM and PGM. Costs a look at the file's
/// beginning, in a PNG at the heads of its parts.
///
///     Ko::Image stored(Ko::PF_YCC444P), upright(Ko::PF_YCC444P);
///     Ko::readImage(stored, name);
///     Ko::rotate(upright, stored, Ko::readOrientation(name));
/// @throws std::logic_error "[readOrientation]: Cannot read NAME: extension not recognized.", std::out_of_range for a
///         name without a dot; std::runtime_error "[readOrientation]: Cannot open NAME: REASON.", std::bad_alloc
KOVANTA_API Orientation readOrientation(const std::string& name);
/// The same of a still in memory.
/// @param data as for readImage()
/// @param size in bytes
/// @throws std::runtime_error "[readOrientation]: No known still.", std::bad_alloc
KOVANTA_API Orientation readOrientation(const void* data, std::size_t size);

/// Reads a binary PPM ("P6", maximum value 255). Samples that a short file does not hold become 0.
/// @throws as parseHeader()
KOVANTA_API void readPpmImage(Image<>& im, const std::string& name);
/// Reads a binary PGM ("P5", maximum value 255). Samples that a short file does not hold become 0.
/// @throws as parseHeader()
KOVANTA_API void readPgmImage(Image<>& im, const std::string& name);
/// Writes a binary PPM. A refused conversion leaves a file with the header only.
KOVANTA_API void writePpmImage(const std::string& name, const Image<>& im);
/// Writes a binary PGM; otherwise as writePpmImage().
KOVANTA_API void writePgmImage(const std::string& name, const Image<>& im);

/// Reads a JPEG file, colour as full-range Y'CbCr. What libjpeg can repair (a file that ends early, say) is a picture,
/// with libjpeg's warning on standard error. The image owns its pixels afterwards.
/// @throws std::runtime_error "[readJpegImage]: Unsupported color space." for CMYK and the like,
///         "[readJpegImage]: libjpeg failed. (REASON)", also for files coded in RGB, for those whose scans together
///         pass more than 2^31 pixels (50 scans are always allowed), and for progressive ones that would take more than
///         1 GiB beside the picture and more than the picture and an eighth
KOVANTA_API void readJpegImage(Image<>& im, const std::string& name);
/// Writes a colour JPEG of quality 100 with libjpeg's default chroma sampling (4:2:0).
/// @throws std::runtime_error "[writeJpegImage]: libjpeg failed. (REASON)", for a size that JPEG has not
KOVANTA_API void writeJpegImage(const std::string& name, const Image<>& im);
/// The same with other settings.
/// @param name of the file
/// @param im as in the first
/// @param quality 1 (least) to 100; 75 to 95 are usual
/// @param sampling of the chroma
/// @throws std::logic_error "[writeJpegImage]: Quality must be 1 to 100."; otherwise as the first
KOVANTA_API void writeJpegImage(const std::string& name, const Image<>& im, unsigned int quality,
                                ChromaSampling sampling = CS_420);

/// Reads a PNG file of any kind: 16-bit samples lose their low byte, palettes and 1, 2 and 4-bit greys are expanded,
/// transparency of a palette is dropped. Alpha beside grey is dropped with a line on standard output. Texts, profiles
/// and unknown chunks are skipped unread. The image owns its pixels afterwards.
/// @throws std::runtime_error "[readPngImage]: png_error called." when libpng gives up (its message goes to standard
///         error), "[readPngImage]: Error creating PNG read structure.",
///         "[readPngImage]: Error creating PNG info structure.", "[readPngImage]: Do not know how to decode this PNG."
KOVANTA_API void readPngImage(Image<>& im, const std::string& name);
/// Writes an 8-bit RGB PNG, not interlaced.
/// @throws std::runtime_error "writePngImage: png_error called." when libpng gives up,
///         "[writePngImage]: Error creating PNG write structure.",
///         "[writePngImage]: Error creating PNG info structure."
KOVANTA_API void writePngImage(const std::string& name, const Image<>& im);
/// The same at another effort; the pixels are the same at all.
/// @param name of the file
/// @param im as in the first
/// @param level 0 (not compressed, fast) to 9 (smallest, slow); 6 is what the first one takes
/// @throws std::logic_error "[writePngImage]: Level must be 0 to 9."; otherwise as the first
KOVANTA_API void writePngImage(const std::string& name, const Image<>& im, unsigned int level);
/// @}

/// @}

} // namespace Ko

/// @addtogroup stills
/// @{

/// Consumes the header of a binary PPM or PGM file and leaves the stream at the first pixel byte.
///
/// After the magic, tokens separated by whitespace give width, height and maximum value; a token that starts with '#'
/// is a comment up to the next line feed. One byte after the maximum value ends the header. Numbers are read in the
/// classic locale, as `boost::lexical_cast<unsigned int>` reads them. A comment without a line feed never ends.
/// One thread at a time per stream.
/// @param width, height in pixels, set on success only; not checked
/// @param stream read from its current position
/// @param type the digit after the 'P' that the file must have: '6' for PPM, '5' for PGM
/// @throws std::runtime_error "[ConvertIm::parseHeader]: Incorrect PPM/PGM header.",
///         "[ConvertIm::parseHeader]: Only a maximum color value of 255 is supported now.", boost::bad_lexical_cast
KOVANTA_API void parseHeader(unsigned int& width, unsigned int& height, std::istream& stream, char type);

/// @}

#endif
