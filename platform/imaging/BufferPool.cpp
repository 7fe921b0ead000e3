#include "platform/imaging/BufferPool.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace imaging {

namespace {

constexpr std::size_t kKeepAtMost = std::size_t{256} << 20;

// Blocks are handed out in sizes that similar requests share.
std::size_t roundedUp(std::size_t bytes)
{
    const std::size_t grain = bytes < 65536 ? 4096 : 65536;
    return (std::max<std::size_t>(bytes, 1) + grain - 1) / grain * grain;
}

} // namespace

BufferPool& BufferPool::shared()
{
    // Never destroyed: bitmaps that outlive static destruction still give their memory back.
    static BufferPool& pool = *new BufferPool;
    return pool;
}

void* BufferPool::take(std::size_t bytes)
{
    const std::size_t size = roundedUp(bytes);
    {
        const std::lock_guard lock(_mutex);
        const auto found = std::find_if(_free.begin(), _free.end(),
                                        [size](const Block& b) { return b.size == size; });
        if (found != _free.end()) {
            void* memory = found->memory;
            _free.erase(found);
            _kept -= size;
            return memory;
        }
    }
    return std::aligned_alloc(64, size);
}

void BufferPool::give(void* memory, std::size_t bytes)
{
    const std::size_t size = roundedUp(bytes);
    const std::lock_guard lock(_mutex);
    _free.push_front({size, memory});
    _kept += size;
    while (_kept > kKeepAtMost) {
        _kept -= _free.back().size;
        std::free(_free.back().memory);
        _free.pop_back();
    }
}

} // namespace imaging
