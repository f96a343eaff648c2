// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_CONVERSIONROUTINES_H
#define KOVANTA_SRC_IMAGE_CONVERSIONROUTINES_H

#include "Kovanta/Image.h"
#include "image/RowKernels.h"
#include "image/SharedMemory.h"

/// The conversions of Kovanta/ConvertIm.h, with the kernels that they use: what images share is found out once.
namespace Ko::routines {

/// Where source and target share memory, only kernels that go one sample after the other give the same on every
/// processor. Where both together are more than the largest cache holds, the target is written past it: it would not
/// stay there.
const RowKernels& kernelsFor(const Image<>& dst, const Image<>& src, const Sharing& sharing);

/// Which of the kernels' matrices a routine uses; there is one instance for each.
using MatrixOf = RowKernels::Matrix RowKernels::*;

template <MatrixOf matrix>
void RGB_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
template <MatrixOf matrix>
void YCC444P_2_RGB(Image<>& dst, const Image<>& src, const RowKernels& kernels);

void BGR_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void RGBA_2_YCCA4444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void RGB_2_YCC420P(Image<>& dst, const Image<>& src, const RowKernels& cachedKernels);
void JFIF_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void YCC444P_2_JFIF(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void YCC444P_2_Y(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void JFIF422P_2_PF_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void Y_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void YCC444P_2_YCC420P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void YCC420P_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void YUY2_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels);
void YCC444P_2_YUY2(Image<>& dst, const Image<>& src, const RowKernels& kernels);

} // namespace Ko::routines

#endif
