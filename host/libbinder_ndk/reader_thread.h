// Which threads read connections: on them nothing may wait for a peer or run the program's code.
#pragma once

namespace hostbinder {

bool isReaderThread();
// Marks the current thread, or takes the mark away.
void markReaderThread(bool isReader);

}  // namespace hostbinder
