// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORS_H

// The vector operations that the kernels are written in: those of the level whose source includes this. A source of
// longer vectors includes their header first.
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS512_H
#include "image/kernels/Vectors256.h"
#endif

#endif
