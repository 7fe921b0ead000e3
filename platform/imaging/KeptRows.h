// Rows that a thread keeps from one span to the next, because what is computed from neighbouring
// rows reads most of them again for the row above.
#pragma once

#include "platform/imaging/ColumnMemory.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace imaging {

// One evaluator's kept rows of floats or other numbers. A tile computes a row once, and nothing
// larger than a tile is stored.
template <class Number>
class KeptRowsOf {
    static constexpr int kNever = std::numeric_limits<int>::min();

public:
    // Of `count` neighbouring rows none is computed twice; each has room for so many numbers.
    KeptRowsOf(int count, std::size_t numbers)
        : _slots(std::bit_ceil(static_cast<unsigned>(count))), _numbersPerRow(numbers)
    {
    }

    // The rows over the columns of one span.
    class Column {
    public:
        // Row y, filled by make(Number* row) when it is not there. Good until a row `count` or more
        // away is asked for.
        template <class Make>
        const Number* row(int y, const Make& make)
        {
            const unsigned slot = static_cast<unsigned>(y) & (static_cast<unsigned>(_y.size()) - 1);
            Number* row = _numbers.data() + slot * _numbersPerRow;
            if (_y[slot] != y) {
                _y[slot] = kNever;
                make(row);
                _y[slot] = y;
            }
            return row;
        }

    private:
        friend class KeptRowsOf;
        std::size_t _numbersPerRow = 0;
        std::vector<int> _y;
        std::vector<Number> _numbers;
    };
    // Good until the thread has asked for ColumnMemory's number of others.
    Column& column(const Span& span) const
    {
        return _memory.of(span, [this](Column& c) {
            c._numbersPerRow = _numbersPerRow;
            c._y.assign(_slots, kNever);
            c._numbers.resize(_slots * _numbersPerRow);
        });
    }

private:
    unsigned _slots; // a power of two
    std::size_t _numbersPerRow;
    ColumnMemory<Column> _memory;
};
using KeptRows = KeptRowsOf<float>;

} // namespace imaging
