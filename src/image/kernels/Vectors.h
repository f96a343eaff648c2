// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORS_H

// The vector operations that the kernels are written in: those of the level whose source includes this. A source of
// other vectors than AVX2's includes their header first.
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS512_H
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS128_H
#include "image/kernels/Vectors256.h"
#endif
#include "image/kernels/Lanes.h"
#endif

#endif
