// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_SDLDRIVER_H
#define KOVANTA_SRC_VIDEOOUT_SDLDRIVER_H

#include <cstdlib>
#include <string_view>

namespace Ko {

/// Makes SDL use its X11 driver while it starts, unless the user has chosen one. Left alone, SDL goes on without an X
/// server to drivers that draw with letters in the terminal, and one of them ends the process when there is none.
class SdlDriver {
public:
    SdlDriver()
        : chosen(setting().empty()) {
        if (chosen)
            setenv(variable, "x11", 1);
    }
    SdlDriver(const SdlDriver&) = delete;
    SdlDriver& operator=(const SdlDriver&) = delete;
    ~SdlDriver() {
        if (chosen)
            unsetenv(variable);
    }

    /// Whether it is the X11 driver that SDL will use.
    static bool isX11() { return setting().empty() || setting() == "x11"; }

private:
    static constexpr char variable[] = "SDL_VIDEODRIVER";

    static std::string_view setting() {
        const char* const value = std::getenv(variable);
        return value ? value : "";
    }

    bool chosen;
};

} // namespace Ko

#endif
