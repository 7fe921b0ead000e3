// Recycled, uninitialised, 64-byte aligned memory for pixels.
#pragma once

#include <cstddef>
#include <list>
#include <mutex>
#include <utility>

namespace imaging {

class BufferPool {
public:
    static BufferPool& shared();

    // Uninitialised memory of at least that many bytes; null when it cannot be had.
    void* take(std::size_t bytes);
    // Returns memory that take() gave for the same number of bytes. Up to a quarter of a gigabyte
    // is kept for the next taker, the rest goes back to the system.
    void give(void* memory, std::size_t bytes);

private:
    struct Block {
        std::size_t size;
        void* memory;
    };

    std::mutex _mutex;
    std::list<Block> _free; // the one returned last in front; a few dozen at most
    std::size_t _kept = 0;
};

// A pooled array of floats, uninitialised.
class FloatBuffer {
public:
    FloatBuffer() = default;
    explicit FloatBuffer(std::size_t count)
        : _bytes(count * sizeof(float)),
          _data(static_cast<float*>(BufferPool::shared().take(_bytes)))
    {
    }
    FloatBuffer(FloatBuffer&& other) noexcept { swap(other); }
    FloatBuffer& operator=(FloatBuffer&& other) noexcept
    {
        swap(other);
        return *this;
    }
    ~FloatBuffer()
    {
        if (_data)
            BufferPool::shared().give(_data, _bytes);
    }

    explicit operator bool() const { return _data != nullptr; }
    float* data() { return _data; }
    const float* data() const { return _data; }

private:
    void swap(FloatBuffer& other)
    {
        std::swap(_bytes, other._bytes);
        std::swap(_data, other._data);
    }

    std::size_t _bytes = 0;
    float* _data = nullptr;
};

} // namespace imaging
