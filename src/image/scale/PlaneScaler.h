// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SCALE_PLANESCALER_H
#define KOVANTA_SRC_IMAGE_SCALE_PLANESCALER_H

#include "image/PlaneRows.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace Ko {

/// What is scaled, of units that have so many bytes, each of which is scaled apart. No size is 0.
struct ScaleSizes {
    std::uint32_t fromWidth;
    std::uint32_t fromHeight;
    std::uint32_t toWidth;
    std::uint32_t toHeight;
    std::size_t units;

    friend bool operator==(const ScaleSizes& a, const ScaleSizes& b) {
        return a.fromWidth == b.fromWidth && a.fromHeight == b.fromHeight && a.toWidth == b.toWidth &&
               a.toHeight == b.toHeight && a.units == b.units;
    }
};

/// Scales a plane, with the memory that it takes; source and target do not overlap.
using PlaneScaler =
    std::function<void(const PlaneRows<unsigned char*>& to, const PlaneRows<const unsigned char*>& from)>;

/// The fastest for the sizes.
/// @throws std::bad_alloc; scalers themselves throw nothing
PlaneScaler makePlaneScaler(const ScaleSizes& sizes);

// The ways there are. Null where one does not know the sizes.

/// Simple ratios, row by row.
PlaneScaler makeSimpleScaler(const ScaleSizes& sizes);
/// All but absurd ones: 16 rows at once.
PlaneScaler makeBlockScaler(const ScaleSizes& sizes);

} // namespace Ko

#endif
