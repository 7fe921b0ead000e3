// Work spread over the cores. The engine's worker threads are the only ones besides the caller's.
#pragma once

#include <functional>

namespace imaging {

// Calls work(first, last) for pieces of begin … end of about `grain` numbers each, on all cores,
// and returns when all are done. Work must not depend on the order or the cut of the pieces.
void parallelRows(int begin, int end, int grain, const std::function<void(int, int)>& work);

// The same, on the calling thread alone when `threaded` is false.
void parallelRows(int begin, int end, int grain, bool threaded,
                  const std::function<void(int, int)>& work);

} // namespace imaging
