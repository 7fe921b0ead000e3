#include "platform/imaging/KeptRows.h"

#include <algorithm>
#include <atomic>
#include <bit>

namespace imaging {

KeptRows::KeptRows(int count, std::size_t floats)
    : _slots(std::bit_ceil(static_cast<unsigned>(count))), _floatsPerRow(floats)
{
    static std::atomic<std::uint64_t> last{0};
    _id = ++last;
}

KeptRows::Column& KeptRows::column(const Span& span) const
{
    thread_local std::array<Column, kColumns> columns;
    thread_local std::uint64_t now = 0;
    ++now;
    Column* oldest = columns.data();
    for (Column& c : columns) {
        if (c._id == _id && c._x == span.x && c._count == span.count) {
            c._lastUse = now;
            return c;
        }
        if (c._lastUse < oldest->_lastUse)
            oldest = &c;
    }
    Column& c = *oldest;
    c._id = _id;
    c._lastUse = now;
    c._x = span.x;
    c._count = span.count;
    c._mask = _slots - 1;
    c._floatsPerRow = _floatsPerRow;
    c._y.assign(_slots, kNever);
    c._floats.resize(_slots * _floatsPerRow);
    return c;
}

} // namespace imaging
