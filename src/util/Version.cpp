// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Version.h"

#define TEXT_OF(number) #number
#define VERSION_TEXT(major, minor, patch) TEXT_OF(major) "." TEXT_OF(minor) "." TEXT_OF(patch)

const char* Ko::version() noexcept {
    return VERSION_TEXT(KOVANTA_VERSION_MAJOR, KOVANTA_VERSION_MINOR, KOVANTA_VERSION_PATCH);
}
