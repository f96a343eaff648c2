// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/LibAvMutex.h"

boost::mutex libAvMutex;
