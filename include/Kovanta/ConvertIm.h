// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_CONVERTIM_H
#define KOVANTA_CONVERTIM_H

#include "Kovanta/ColorMatrix.h"
#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

namespace Ko {

/// @addtogroup images
/// @{

/// Converts the pixels of @p src into the format that @p dst already has, and sizes @p dst.
///
/// Same formats are copied with their whole description. Otherwise these pairs exist, each a single pass over the
/// pixels, and nothing is chained through a third format (between RGB and Y'CbCr by ITU-R BT.601, studio range):
///
/// | to           | from                                                        |
/// |--------------|-------------------------------------------------------------|
/// | PF_YCC444P   | PF_RGB, PF_RGBA, PF_Y, PF_JFIF, PF_JFIF422P, PF_YCC420P, PF_YUY2 |
/// | PF_YCC420P   | PF_Y, PF_YCC444P                                            |
/// | PF_RGB, PF_JFIF, PF_Y | PF_YCC444P                                         |
///
/// An owning target that already has the size keeps its buffer. Planes of @p dst that wrap foreign memory stay where
/// they are; a source that is smaller in one dimension is converted into the part it covers.
///
/// Nothing in an owning target is left as memory held it before. Where chroma is halved in the source and a size is
/// odd, the lone last column or row of a PF_YCC444P target takes its neighbour's chroma (from PF_YUY2 its neighbour's
/// samples), and 128 in an image of one column or row; planes that wrap keep what they had there. What the source's
/// planes do not hold, although its format and size say so, becomes 0 in the target.
///
/// Thread-safe for different targets. The source may wrap a part of the target; it is copied first then. The images
/// must be different.
/// @throws std::logic_error "[convertIm]: Don't know how to convert from ... to ...." for every other pair; the
///         target has been resized by then
/// @throws std::logic_error "[Array2D<T>::resize]: Noalloc and trying to resize." when the source does not fit wrapped
///         planes of @p dst
/// @throws std::runtime_error "[convertIm]: Image too large.", std::bad_alloc; the target is then as it was
KOVANTA_API void convertIm(Image<>& dst, const Image<>& src);

/// The same with a matrix of the caller's choice between RGB and Y'CbCr: the pairs of PF_YCC444P with PF_RGB and
/// PF_RGBA, with studio range and exact integer arithmetic for each matrix, at the same speed. CM_BT601 gives what
/// convertIm() without a matrix gives. The other pairs move samples that have been made already, and give the same
/// whatever the matrix is.
///
/// A PF_YCC420P frame of a high-definition video becomes RGB in two calls: into a PF_YCC444P image, and with the
/// matrix from that into PF_RGB.
/// @param dst,src as above
/// @param matrix what made, or is to make, the Y'CbCr samples
/// @throws std::logic_error "[convertIm]: Unknown color matrix." for CM_UNKNOWN and for what is no ColorMatrix,
///         whatever the formats; the target is then as it was
/// @throws std::logic_error, std::runtime_error, std::bad_alloc as above
KOVANTA_API void convertIm(Image<>& dst, const Image<>& src, ColorMatrix matrix);

/// Whether convertIm() knows the way from one format to another. The four routines below that it does not use are no
/// way that it knows. Thread-safe.
KOVANTA_API bool canConvert(PIXEL_FORMAT from, PIXEL_FORMAT to);

/// @}

} // namespace Ko

/// @addtogroup images
/// @{

/// @name Conversion routines
/// What convertIm() calls, and four more that it does not know. The target must have the source's width and height
/// and planes to match: size it first. Samples beyond what either image's planes hold are neither read nor written.
/// Source and target may wrap the same memory: the result is what one sample after the other gives.
/// They share no state, so different targets may be written at once.
///
/// RGB to Y'CbCr and back are ITU-R BT.601, studio swing, in exact integer arithmetic. Full range is mapped to studio
/// range by Y' = Y * 219 / 255 + 16 and C' = C * 224 / 255 + 16, and back by the inverse, clamped to 0..255.
/// @{

/// PF_RGB (or, for every other source format, four bytes a pixel R, G, B, ignored) to PF_YCC444P.
KOVANTA_API void RGB_2_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_BGR to PF_YCC444P; not used by convertIm().
KOVANTA_API void BGR_2_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_RGBA to PF_YCCA4444P, keeping alpha; not used by convertIm().
KOVANTA_API void RGBA_2_YCCA4444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_RGB to PF_YCC420P; chroma is the truncated mean of each 2x2 block. Not used by convertIm().
KOVANTA_API void RGB_2_YCC420P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YCC444P to PF_RGB, clamped.
KOVANTA_API void YCC444P_2_RGB(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_JFIF to PF_YCC444P.
KOVANTA_API void JFIF_2_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_JFIF422P to PF_YCC444P; each chroma sample serves two pixels. A lone last column takes the last chroma sample.
KOVANTA_API void JFIF422P_2_PF_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_Y to PF_YCC444P, or to PF_YCC420P for every other target; chroma becomes 128.
KOVANTA_API void Y_2_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YCC444P to PF_JFIF.
KOVANTA_API void YCC444P_2_JFIF(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YCC444P to PF_Y (full range); chroma is dropped.
KOVANTA_API void YCC444P_2_Y(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YCC444P to PF_YCC420P; chroma is the rounded mean of each whole 2x2 block.
KOVANTA_API void YCC444P_2_YCC420P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YCC420P to PF_YCC444P; chroma is replicated. The last odd column and row of the chroma stay unwritten.
KOVANTA_API void YCC420P_2_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YUY2 to PF_YCC444P. A last odd column stays unwritten.
KOVANTA_API void YUY2_2_YCC444P(Ko::Image<>& dst, const Ko::Image<>& src);
/// PF_YCC444P to PF_YUY2; chroma is the truncated mean of each pair. Not used by convertIm().
KOVANTA_API void YCC444P_2_YUY2(Ko::Image<>& dst, const Ko::Image<>& src);
/// @}

/// @}

#endif
