#include "platform/imaging/Parallel.h"

#include "platform/foundation/Work.h"

#include <algorithm>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

namespace imaging {

void parallelRows(int begin, int end, int grain, const std::function<void(int, int)>& work)
{
    if (begin >= end)
        return;
    const tbb::blocked_range<int> range(begin, end, static_cast<std::size_t>(std::max(grain, 1)));
    foundation::Work* const asked = foundation::currentWork();
    // Not auto_partitioner: equal pieces keep the working set in the caches.
    tbb::parallel_for(
        range,
        [&](const tbb::blocked_range<int>& r) {
            const foundation::WorkShare share(asked);
            if (!foundation::stopRequested())
                work(r.begin(), r.end());
        },
        tbb::simple_partitioner());
    // Pieces were left out, here or by a loop around this one that was given up.
    foundation::checkpoint();
}

void parallelRows(int begin, int end, int grain, bool threaded,
                  const std::function<void(int, int)>& work)
{
    if (threaded) {
        parallelRows(begin, end, grain, work);
        return;
    }
    for (int y = begin; y < end; y += std::max(grain, 1)) {
        foundation::checkpoint();
        work(y, std::min(end, y + std::max(grain, 1)));
    }
}

} // namespace imaging
