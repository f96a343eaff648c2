// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_PARSEHEADER_H
#define KOVANTA_SRC_IMAGEFILE_PARSEHEADER_H

#include <iosfwd>

namespace Ko {

/// parseHeader(), but that a comment ends with the stream as well: nobody waits for more of what is in memory.
void parseWholeHeader(unsigned int& width, unsigned int& height, std::istream& stream, char type);

} // namespace Ko

#endif
