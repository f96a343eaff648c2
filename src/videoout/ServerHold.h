// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_SERVERHOLD_H
#define KOVANTA_SRC_VIDEOOUT_SERVERHOLD_H

struct xcb_connection_t;

namespace Ko {

/// Keeps the X server from starting anew. Servers do that when their last client leaves, and then drop whoever is
/// connecting; SDL connects and leaves before it connects for good.
class ServerHold {
public:
    /// Waits for a server that is starting anew. Without a server there is nothing to hold, and SDL will say so.
    /// @param wanted false holds nothing
    explicit ServerHold(bool wanted);
    ServerHold(const ServerHold&) = delete;
    ServerHold& operator=(const ServerHold&) = delete;
    ~ServerHold();

private:
    xcb_connection_t* connection = nullptr;
};

} // namespace Ko

#endif
