// What a thread keeps from one row of spans to the next.
#pragma once

#include "platform/imaging/Node.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

namespace imaging {

// Spans come tile by tile and, in a tile, one above the other, so an evaluator that needs nearly
// the same again can keep its work for them. Each thread has room for a few columns of spans of any
// evaluators with this kind of state; the one that was used longest ago makes room.
template <class State>
class ColumnMemory {
public:
    static constexpr int kColumns = 16;

    ColumnMemory() = default;
    ColumnMemory(const ColumnMemory&) = delete;
    ColumnMemory& operator=(const ColumnMemory&) = delete;

    // This thread's state for the column of spans above and below this one, after restart(state)
    // where it was another's. Good until the thread has asked for kColumns others.
    template <class Restart>
    State& of(const Span& span, const Restart& restart) const
    {
        struct Column {
            std::uint64_t owner = 0, lastUse = 0;
            int x = 0, count = 0;
            State state;
        };
        thread_local std::array<Column, kColumns> columns;
        thread_local std::uint64_t now = 0;
        ++now;
        for (Column& c : columns)
            if (c.owner == _owner && c.x == span.x && c.count == span.count) {
                c.lastUse = now;
                return c.state;
            }
        Column& c =
            *std::min_element(columns.begin(), columns.end(), [](const Column& a, const Column& b) {
                return a.lastUse < b.lastUse;
            });
        c.owner = _owner;
        c.lastUse = now;
        c.x = span.x;
        c.count = span.count;
        restart(c.state);
        return c.state;
    }

private:
    static std::uint64_t nextOwner()
    {
        static std::atomic<std::uint64_t> last{0};
        return ++last;
    }

    std::uint64_t _owner = nextOwner();
};

} // namespace imaging
