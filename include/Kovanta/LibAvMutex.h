// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_LIBAVMUTEX_H
#define KOVANTA_LIBAVMUTEX_H

#include "Kovanta/Export.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

/// @addtogroup videoin
/// @{

/// The one lock under which the library opens and closes every libav context of the process. An application that
/// opens libav contexts of its own takes it too. Not recursive.
extern KOVANTA_API boost::mutex libAvMutex;

/// @}

#endif
