// What a thread keeps from one row of spans to the next.
#pragma once

#include "platform/imaging/Node.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace imaging {

// Spans come tile by tile and, in a tile, one above the other, so an evaluator that needs nearly
// the same rows again can keep its work for them. Each thread has room for the columns of a few
// evaluators, as several may be read in turn. A state outlives its evaluator until another takes
// its room.
template <class State>
class ColumnMemory {
public:
    // This thread's state for the column of spans above and below this one. Calls restart(state)
    // where the state was another's.
    template <class Restart>
    State& of(const Span& span, const Restart& restart) const
    {
        struct Slot {
            std::uint64_t owner = 0;
            int x = 0, count = 0;
            State state;
        };
        thread_local std::array<Slot, 4> slots;
        thread_local unsigned next = 0;
        for (Slot& s : slots)
            if (s.owner == _owner && s.x == span.x && s.count == span.count)
                return s.state;
        Slot& s = slots[next++ % slots.size()];
        s.owner = _owner;
        s.x = span.x;
        s.count = span.count;
        restart(s.state);
        return s.state;
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
