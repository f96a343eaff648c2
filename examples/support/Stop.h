// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_STOP_H
#define KOVANTA_EXAMPLES_SUPPORT_STOP_H

namespace example {

/// From now on Ctrl-C, TERM and a terminal that goes away (HUP) ask the program to finish; a second one of a kind ends
/// it. Calls that wait are interrupted.
void catchStops();
/// Whether one has come.
bool stopAsked();
/// Its number, 0 when none has come.
int stopSignal();

} // namespace example

#endif
