// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_ROWROOM_H
#define KOVANTA_SRC_VIDEOIN_ROWROOM_H

#include <cstddef>
#include <vector>

namespace Ko {

/// Rows between the steps of a conversion. They stay in the processor's cache, and their memory is kept from picture to
/// picture.
class RowRoom {
public:
    /// For pictures of a width. @throws std::bad_alloc
    void fit(std::size_t width) {
        columns = width;
        if (memory.size() < bytes * columns)
            memory.resize(bytes * columns);
    }

    /// Four bytes a column.
    unsigned char* groups() { return part(0); }
    unsigned char* pixels() { return part(4); }
    /// Two bytes a column.
    unsigned char* pairs() { return part(8); }
    /// One byte a column; there are seven such rows.
    unsigned char* row(std::size_t i) { return part(10 + i); }

private:
    static constexpr std::size_t bytes = 4 + 4 + 2 + 7;
    unsigned char* part(std::size_t i) { return memory.data() + i * columns; }

    std::vector<unsigned char> memory;
    std::size_t columns = 0;
};

} // namespace Ko

#endif
