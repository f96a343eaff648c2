// SPDX-License-Identifier: BSD-2-Clause

/// Xlib loses a string of 13 bytes with every connection, Mesa below SDL 2 a megabyte with every process. Read by the
/// leak checker, which defines it weakly.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libX11.so\nleak:libGLX_mesa.so\n";
}
