#include "generators/Sampling.h"

#include <numeric>

namespace generators {

Sampling Sampling::all(PixelSize size)
{
    Sampling sampling{size, std::vector<int>(size.width), std::vector<int>(size.height)};
    std::iota(sampling.columns.begin(), sampling.columns.end(), 0);
    std::iota(sampling.rows.begin(), sampling.rows.end(), 0);
    return sampling;
}

std::vector<BlockRun> blockRuns(const std::vector<int>& seen, int side)
{
    std::vector<BlockRun> runs;
    for (int i = 0; i < std::ssize(seen); ++i) {
        const int block = seen[i] / side;
        if (runs.empty() || runs.back().block != block)
            runs.push_back({block, i, i});
        runs.back().end = i + 1;
    }
    return runs;
}

} // namespace generators
