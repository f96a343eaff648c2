// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_CAPTURE_DEVICES_H
#define KOVANTA_EXAMPLES_CAPTURE_DEVICES_H

#include <optional>
#include <string>

/// @return the number of the device that is meant by "2", "/dev/video2" or a link to that, if one is
std::optional<unsigned int> deviceNumber(const std::string& word);

/// Prints the cameras, those that may not be opened included.
void listDevices();

/// Prints what a device offers, of whatever format: inputs, pixel formats, and of those that the library reads the
/// sizes with their rates.
/// @throws std::runtime_error when it cannot be opened
void listFormats(unsigned int device);

/// The names of the formats of a device that offers none that the library reads; empty for others.
std::string otherFormats(unsigned int device);

#endif
