// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SIZELIMIT_H
#define KOVANTA_SRC_IMAGE_SIZELIMIT_H

#include <cstdint>

namespace Ko {

/// Whether a plane of this many bytes a row fits the 32-bit sizes of the arrays.
constexpr bool fitsArray(std::uint64_t rowBytes, std::uint64_t rowCount) {
    constexpr std::uint64_t limit = 0xFFFFFFFFu;
    return rowBytes <= limit && rowCount <= limit && rowBytes * rowCount <= limit;
}

/// The refusal of a size that does not fit: std::runtime_error "[function]: Image too large."
[[noreturn]] void throwTooLarge(const char* function);

} // namespace Ko

#endif
