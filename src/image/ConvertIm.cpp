// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"

#include "image/ArrayCopy.h"
#include "image/ConversionRoutines.h"
#include "image/FormatTable.h"
#include "image/ImageLayout.h"
#include "image/MissingSamples.h"
#include "image/SharedMemory.h"
#include "util/Errors.h"

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace {

using namespace Ko;
using Routine = void (*)(Image<>& dst, const Image<>& src, const RowKernels& kernels);

// Nearly every pair has PF_YCC444P on one side. The switches have no default: a format that they do not decide about
// does not compile.
#pragma GCC diagnostic push
#pragma GCC diagnostic error "-Wswitch"

/// The routine from a format to PF_YCC444P; null where there is none.
template <routines::MatrixOf matrix>
constexpr Routine routineToYcc444p(PIXEL_FORMAT source) {
    switch (source) {
    case PF_RGB:
    case PF_RGBA:
        return routines::RGB_2_YCC444P<matrix>;
    case PF_Y:
        return routines::Y_2_YCC444P;
    case PF_JFIF:
        return routines::JFIF_2_YCC444P;
    case PF_JFIF422P:
        return routines::JFIF422P_2_PF_YCC444P;
    case PF_YCC420P:
        return routines::YCC420P_2_YCC444P;
    case PF_YUY2:
        return routines::YUY2_2_YCC444P;
    case PF_UNKNOWN:
    case PF_YCC444P:
    case PF_YCCA4444P:
    case PF_YAP:
    case PF_BGR:
        return nullptr;
    }
    return nullptr;
}

/// The routine from PF_YCC444P to a format; null where there is none.
template <routines::MatrixOf matrix>
constexpr Routine routineFromYcc444p(PIXEL_FORMAT target) {
    switch (target) {
    case PF_RGB:
        return routines::YCC444P_2_RGB<matrix>;
    case PF_Y:
        return routines::YCC444P_2_Y;
    case PF_JFIF:
        return routines::YCC444P_2_JFIF;
    case PF_YCC420P:
        return routines::YCC444P_2_YCC420P;
    case PF_UNKNOWN:
    case PF_YCC444P:
    case PF_YCCA4444P:
    case PF_RGBA:
    case PF_YAP:
    case PF_JFIF422P:
    case PF_BGR:
    case PF_YUY2:
        return nullptr;
    }
    return nullptr;
}

#pragma GCC diagnostic pop

void identityTransform(Image<>& dst, const Image<>& src, const RowKernels& /*kernels*/) {
    dst = src;
}

using BranchTable = std::array<std::array<Routine, formatCount>, formatCount>; // [target][source]

template <routines::MatrixOf matrix>
constexpr BranchTable makeBranchTable() {
    BranchTable table{};
    for (std::size_t f = 0; f < formatCount; ++f) {
        const auto format = static_cast<PIXEL_FORMAT>(f);
        table[PF_YCC444P][f] = routineToYcc444p<matrix>(format);
        if (format != PF_YCC444P)
            table[f][PF_YCC444P] = routineFromYcc444p<matrix>(format);
    }
    table[PF_YCC420P][PF_Y] = routines::Y_2_YCC444P;
    for (std::size_t f = 0; f < formatCount; ++f)
        table[f][f] = identityTransform;
    return table;
}
constexpr BranchTable branchTables[] = {makeBranchTable<&RowKernels::bt601>(), // [matrix - CM_BT601]
                                        makeBranchTable<&RowKernels::bt709>(), makeBranchTable<&RowKernels::bt2020>()};

/// Null for an unsupported pair. A format outside the enumeration, left behind by a refused fmt(), is no index.
/// @param matrix a told one
Routine findRoutine(PIXEL_FORMAT target, PIXEL_FORMAT source, ColorMatrix matrix) {
    return target < formatCount && source < formatCount ? branchTables[matrix - CM_BT601][target][source] : nullptr;
}

/// Resizes the target of an assignment only where that will be refused: the assignment takes what memory it needs
/// itself, all of it or none.
void resizeForRefusal(Image<>& dst, const Image<>& src) {
    ImageLayout::checkTarget(dst, src.width, src.height, "convertIm");
    for (int p = 0; p < ImageLayout::planeCount; ++p)
        if (refusesSize(dst.plane[p], src.plane[p])) {
            ImageLayout::resizeTarget(dst, src.width, src.height, "convertIm");
            return;
        }
}

/// @param matrix a told one
void convert(Image<>& dst, const Image<>& src, ColorMatrix matrix) {
    const Routine routine = findRoutine(dst.format, src.format, matrix);
    if (!routine) {
        // Composed first: for want of memory the target stays as it was.
        const std::logic_error refusal(errorText("convertIm", "Don't know how to convert from " +
                                                                  fmt2string(src.format) + " to " +
                                                                  fmt2string(dst.format) + "."));
        ImageLayout::resizeTarget(dst, src.width, src.height, "convertIm");
        throw refusal;
    }
    if (routine == identityTransform) {
        resizeForRefusal(dst, src);
        dst = src;
        return;
    }
    const Sharing sharing = sharingOf(dst, src);
    if (sharing.sourceWrapsTarget) {
        convert(dst, Image<>(src), matrix); // the rows that are read must neither go nor be written
        return;
    }
    ImageLayout::resizeTarget(dst, src.width, src.height, "convertIm");
    if (!isWhole(src))
        blacken(dst);
    routine(dst, src, routines::kernelsFor(dst, src, sharing));
    completeLoneSamples(dst, src.format);
}

} // namespace

namespace Ko {

bool canConvert(PIXEL_FORMAT from, PIXEL_FORMAT to) {
    return findRoutine(to, from, CM_BT601) != nullptr;
}

void convertIm(Image<>& dst, const Image<>& src) {
    convert(dst, src, CM_BT601);
}

void convertIm(Image<>& dst, const Image<>& src, ColorMatrix matrix) {
    switch (matrix) {
    case CM_BT601:
    case CM_BT709:
    case CM_BT2020:
        return convert(dst, src, matrix);
    case CM_UNKNOWN:
        break;
    }
    throwLogicError("convertIm", "Unknown color matrix.");
}

} // namespace Ko
