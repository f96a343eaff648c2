# SPDX-License-Identifier: BSD-2-Clause
# The libraries that Kovanta itself is linked against.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS filesystem thread date_time system)
find_package(JPEG REQUIRED)
find_package(PNG 1.6 REQUIRED)
find_package(Freetype REQUIRED)
pkg_check_modules(LIBAV REQUIRED IMPORTED_TARGET libavformat>=59 libavcodec>=59 libavutil>=57)
pkg_check_modules(SDL12 REQUIRED IMPORTED_TARGET sdl)
pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
