// Work spread over threads.
#pragma once

#include <cstdint>
#include <functional>

namespace imaging {

/**
 * Calls work(index, worker) once for each index below `count`, from up to `threads` threads, of
 * which the caller's is one, worker 0; returns when all is done. Whoever is free takes the next
 * index. Threads that the system refuses are done without.
 */
void ParallelFor(uint32_t count, uint32_t threads,
                 const std::function<void(uint32_t index, uint32_t worker)>& work);

}  // namespace imaging
