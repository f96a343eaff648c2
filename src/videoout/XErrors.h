// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_XERRORS_H
#define KOVANTA_SRC_VIDEOOUT_XERRORS_H

namespace Ko {

/// Xlib ends the process at any error unless its handlers are replaced. SDL puts its own before them and passes on
/// what it does not know, so ours must be there before SDL starts.
namespace XErrors {

void install();
/// Puts the handlers back that install() found; after SDL has ended.
void remove() noexcept;
/// Whether the connection was lost since the last call: what SDL still holds of it can only be ended.
bool takeLoss() noexcept;

/// Whether an error waits for Operation::check() in this thread.
bool arrived() noexcept;
/// Forgets it.
void dismiss() noexcept;

/// While one lives, X errors of this thread belong to the named operation; otherwise they go to the earlier handlers.
/// A lost connection throws from inside Xlib, because Xlib cannot go on: "[NAME]: Lost the connection to the X
/// server.".
class Operation {
public:
    /// @param name "Class::operation", kept as a pointer
    /// @throws std::runtime_error "[NAME]: Lost the connection to the X server." again once it is lost: SDL would go on
    ///         with a null connection, which ends the process
    explicit Operation(const char* name);
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation();

    /// @throws std::runtime_error "[NAME]: X error: TEXT." if one arrived
    void check() const;

private:
    const char* outer;
};

} // namespace XErrors
} // namespace Ko

#endif
