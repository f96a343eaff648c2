#ifndef KOVANTA_EXPORT_H
#define KOVANTA_EXPORT_H

/// Marks what the shared library exports; everything else is compiled with hidden visibility.
#define KOVANTA_API __attribute__((visibility("default")))

/// Marks private members that callers never reach, so that an exported class does not export them.
#define KOVANTA_LOCAL __attribute__((visibility("hidden")))

#endif
