// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXPORT_H
#define KOVANTA_EXPORT_H

/// Marks what the shared library exports; everything else is compiled with hidden visibility.
#define KOVANTA_API __attribute__((visibility("default")))

/// Marks the definition of a class's Impl, which would be exported with the class that it belongs to.
#define KOVANTA_LOCAL __attribute__((visibility("hidden")))

#endif
