// Work spread over threads.
#pragma once

#include <cstdint>
#include <functional>

namespace imaging {

// Calls work(index, worker) once for each index below `count`, from the calling thread and up to
// `threads` - 1 others, each of which has a number `worker` of its own below `threads`; returns
// when all is done. A free thread takes the next index. A thread that the system refuses is left
// out.
void ParallelFor(uint32_t count, uint32_t threads,
                 const std::function<void(uint32_t index, uint32_t worker)>& work);

}  // namespace imaging
