// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FRAC_H
#define KOVANTA_FRAC_H

namespace Ko {

/// @addtogroup utilities
/// @{

/// An exact fraction, a plain value. A rate of 25 frames per second is `Frac<unsigned int>{25, 1}`.
template <class T>
struct Frac {
    T num; ///< Numerator.
    T den; ///< Denominator.
};

/// Equal in both fields: 1/2 and 2/4 differ.
template <class T>
constexpr bool operator==(const Frac<T>& a, const Frac<T>& b) {
    return a.num == b.num && a.den == b.den;
}
/// Different in a field.
template <class T>
constexpr bool operator!=(const Frac<T>& a, const Frac<T>& b) {
    return !(a == b);
}

/// @}

} // namespace Ko

#endif
