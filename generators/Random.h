// The random sequence of the generators: the C library's own, counted.
//
// Whoever asks for a picture seeds it with srand immediately before. The order of the draws is part
// of the picture, so write one draw to a statement: C++ does not order the arguments of a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace generators {

// One call of rand: 0 to 2147483647.
int randomInt();

// One call of rand as a fraction of 2^31, in single precision: 0 to 1. The largest draws round up
// to exactly 1.
float randomUnit();

// Many draws: the same numbers as from randomInt(), at less than half the cost. Holds the state of
// the C library's sequence while it lives and gives it back when it ends; nothing else may draw or
// seed meanwhile.
class RandomRun {
public:
    RandomRun();
    ~RandomRun();
    RandomRun(const RandomRun&) = delete;
    RandomRun& operator=(const RandomRun&) = delete;

    // The next so many numbers at once: less than half the cost again.
    void take(int* numbers, std::size_t count);

    // What randomInt() would have answered.
    int next()
    {
#ifdef __GLIBC__
        std::int32_t drawn;
        random_r(&_data, &drawn);
        ++_draws;
        return drawn;
#else
        return randomInt();
#endif
    }

private:
#ifdef __GLIBC__
    static constexpr std::size_t kStateBytes = 128;

    random_data _data = {};
    char* _borrowed = nullptr; // the state of rand
    alignas(std::int32_t) char _standIn[kStateBytes];
    alignas(std::int32_t) char _own[kStateBytes];
    std::uint64_t _draws = 0;
#endif
};

// Draws since the last picture was begun.
std::uint64_t randomDraws();

// Counts from 0 again; the generators' base does so when a picture is begun.
void restartRandomDraws();

} // namespace generators
