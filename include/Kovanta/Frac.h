#ifndef KOVANTA_FRAC_H
#define KOVANTA_FRAC_H

namespace Ko {

/// An exact fraction, a plain value. A rate of 25 frames per second is `Frac<unsigned int>{25, 1}`.
template <class T>
struct Frac {
    T num; ///< Numerator.
    T den; ///< Denominator.
};

} // namespace Ko

#endif
