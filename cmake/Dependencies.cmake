# SPDX-License-Identifier: BSD-2-Clause
# The libraries that Kovanta itself is linked against.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
# By Boost's own package files, as newer CMake has none. DateTime is used by its headers alone, which come along.
find_package(Boost 1.74 CONFIG REQUIRED COMPONENTS filesystem thread)
find_package(JPEG REQUIRED)
find_package(PNG 1.6 REQUIRED)
find_package(Freetype REQUIRED)
pkg_check_modules(LIBAV REQUIRED IMPORTED_TARGET libavformat>=59 libavcodec>=59 libavutil>=57)
pkg_check_modules(SDL12 REQUIRED IMPORTED_TARGET sdl)
pkg_check_modules(KOVANTA_X11 REQUIRED IMPORTED_TARGET x11)
pkg_check_modules(V4L2 REQUIRED IMPORTED_TARGET libv4l2)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
