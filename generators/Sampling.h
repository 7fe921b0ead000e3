// Pictures that are shown smaller than they are, or in part: which of their pixels are seen.
#pragma once

#include <cstddef>
#include <vector>

namespace generators {

// Of a picture, in pixels.
struct PixelSize {
    int width = 0, height = 0;

    // Both sides are in 1 … Bitmap::kMaximumSide.
    bool isValid() const;
    // width × height.
    std::size_t pixels() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
};

struct Sampling {
    PixelSize size;                 // of the whole picture
    std::vector<int> columns, rows; // of it that are seen, ascending; rows from the top

    static Sampling all(PixelSize size);

    // Of what is seen.
    PixelSize shown() const
    {
        return {static_cast<int>(columns.size()), static_cast<int>(rows.size())};
    }
};

// Neighbours among the columns or rows that are seen, begin … end - 1, in the same block of so many
// pixels.
struct BlockRun {
    int block = 0;
    int begin = 0, end = 0;
};
std::vector<BlockRun> blockRuns(const std::vector<int>& seen, int side);

} // namespace generators
