// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VERSION_H
#define KOVANTA_VERSION_H

#include "Kovanta/Export.h"

/// @file
/// Which version a program is compiled with (the numbers), and which one it runs with (Ko::version()). The build takes
/// the version of the packages from here.

/// @addtogroup utilities
/// @{

/// Raised by what breaks programs, once it is not 0.
#define KOVANTA_VERSION_MAJOR 0
/// Raised by additions, and while the first is 0 by what breaks programs.
#define KOVANTA_VERSION_MINOR 1
/// Raised by repairs.
#define KOVANTA_VERSION_PATCH 0

/// The three numbers as one, for comparisons: 0.1.0 is 100, 1.2.3 is 10203.
#define KOVANTA_VERSION (KOVANTA_VERSION_MAJOR * 10000 + KOVANTA_VERSION_MINOR * 100 + KOVANTA_VERSION_PATCH)

/// @}

namespace Ko {

/// @addtogroup utilities
/// @{

/// The version of the library that is loaded, for example "0.1.0". Thread-safe; the text lives as long as the library.
KOVANTA_API const char* version() noexcept;

/// @}

} // namespace Ko

#endif
