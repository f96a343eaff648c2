// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_LIBAV_LOG_H
#define KOVANTA_SRC_LIBAV_LOG_H

namespace Ko::libav {

/// Stops libav from printing to standard error, once, unless the application has chosen a log level of its own: what
/// matters comes out as exceptions, and what a damaged packet provokes is nobody's line to print.
void quietByDefault();

} // namespace Ko::libav

#endif
