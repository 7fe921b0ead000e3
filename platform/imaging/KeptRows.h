// Rows that a thread keeps from one span to the next, because what is computed from neighbouring
// rows reads most of them again for the row above.
#pragma once

#include "platform/imaging/Node.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace imaging {

// One evaluator's kept rows. Each thread has its own, for a few columns of spans at a time: a tile
// computes a row once, and nothing larger than a tile is stored.
class KeptRows {
    static constexpr int kNever = std::numeric_limits<int>::min();

public:
    // Of `count` neighbouring rows none is computed twice; each has room for `floats` numbers.
    KeptRows(int count, std::size_t floats);
    KeptRows(const KeptRows&) = delete;
    KeptRows& operator=(const KeptRows&) = delete;

    // The rows over the columns of one span.
    class Column {
    public:
        // Row y, filled by make(float* row) when it is not there. Good until a row `count` or more
        // away is asked for.
        template <class Make>
        const float* row(int y, const Make& make)
        {
            const unsigned slot = static_cast<unsigned>(y) & _mask;
            float* row = _floats.data() + slot * _floatsPerRow;
            if (_y[slot] != y) {
                _y[slot] = kNever;
                make(row);
                _y[slot] = y;
            }
            return row;
        }

    private:
        friend class KeptRows;
        std::uint64_t _id = 0, _lastUse = 0;
        int _x = 0, _count = 0;
        unsigned _mask = 0;
        std::size_t _floatsPerRow = 0;
        std::vector<int> _y;
        std::vector<float> _floats;
    };
    // Good until the thread has asked for kColumns others.
    Column& column(const Span& span) const;

    static constexpr int kColumns = 16;

private:
    std::uint64_t _id;
    unsigned _slots; // a power of two
    std::size_t _floatsPerRow;
};

} // namespace imaging
