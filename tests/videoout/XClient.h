// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_VIDEOOUT_XCLIENT_H
#define KOVANTA_TESTS_VIDEOOUT_XCLIENT_H

#include <array>
#include <string>
#include <vector>

/// The user at the other end of the X server: a second connection that looks at the screen, presses keys and pulls at
/// windows. Keeps Xlib's names away from the tests.
namespace user {

using Rgb = std::array<int, 3>;
struct Geometry {
    int x, y;
    unsigned int width, height;
};

/// Takes the one top-level window that is mapped now, and gives it the keyboard.
void takeWindow();
Geometry geometry();
/// The window's title and its icon's, each with a line feed.
std::string titles();
/// Pixels of the screen, row by row.
std::vector<Rgb> screen(Geometry area);

/// Presses and releases the key of that name, wherever the keyboard points.
void key(const char* name);
void resize(unsigned int width, unsigned int height);
void close();
void destroyWindow();
/// Cuts the window's owner off from the server.
void kill();
/// Sends a bad request over SDL's own connection, whose error has arrived when this returns.
void makeAnError();

} // namespace user

#endif
