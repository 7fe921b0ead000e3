// Colouring a field of values that runs down the columns into pixels that run along the rows.
#pragma once

#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace generators {

constexpr int kTileColumns = 16, kTileRows = 256;

// Calls color(words, values, count) for pieces of columns (up to kTileRows values), and put(x, y,
// words, count) for the same pixels in pieces of rows, on all cores. A few columns are coloured at
// a time and then turned, so that the field is read as a few streams and the pixels are written in
// whole cache lines.
template <class Color, class Put>
void forFieldTiles(const double* field, int width, int height, const Color& color, const Put& put)
{
    const auto paintTile = [&](int left, int top) {
        std::uint32_t words[kTileColumns][kTileRows];
        const int columns = std::min(kTileColumns, width - left);
        const int rows = std::min(kTileRows, height - top);
        for (int x = 0; x < columns; ++x)
            color(words[x], field + static_cast<std::size_t>(left + x) * height + top, rows);
        for (int y = 0; y < rows; ++y) {
            std::uint32_t row[kTileColumns];
            for (int x = 0; x < columns; ++x)
                row[x] = words[x][y];
            put(left, top + y, row, columns);
        }
    };
    const int stripes = (width + kTileColumns - 1) / kTileColumns;
    imaging::parallelRows(0, stripes, 4, [&](int first, int last) {
        for (int stripe = first; stripe < last; ++stripe)
            for (int top = 0; top < height; top += kTileRows)
                paintTile(stripe * kTileColumns, top);
    });
}

} // namespace generators
