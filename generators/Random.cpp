#include "generators/Random.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace generators {

namespace {

// Unsynchronised: the sequence of rand is the process's, so only one thread draws at a time.
std::uint64_t draws = 0;

} // namespace

int randomInt()
{
    ++draws;
    return std::rand();
}

float randomUnit()
{
    const int drawn = randomInt();
    return static_cast<float>(drawn) * 4.656613e-10f;
}

#ifdef __GLIBC__

// rand and random are one sequence here. A state of our own is put in its place, so that random_r,
// which takes no lock, can go on from the one that was there.
RandomRun::RandomRun()
{
    _borrowed = initstate(1, _standIn, sizeof _standIn);
    initstate_r(1, _own, sizeof _own, &_data);
    setstate_r(_borrowed, &_data);
}

RandomRun::~RandomRun()
{
    // Leaving a state records in it how far it has come.
    setstate_r(_own, &_data);
    setstate(_borrowed);
    draws += _draws;
}

// The sum of the numbers 3 and 31 before, of which the lowest bit is not handed out. The state
// holds the last 31, the oldest where the next will be.
void RandomRun::take(int* numbers, std::size_t count)
{
    constexpr int kNumbers = 31, kNear = 3;
    if (_data.rand_deg != kNumbers || _data.rand_sep != kNear) {
        for (std::size_t i = 0; i < count; ++i)
            numbers[i] = next();
        return;
    }
    _draws += count;
    std::uint32_t state[kNumbers];
    std::memcpy(state, _data.state, sizeof state);
    int at = static_cast<int>(_data.fptr - _data.state);
    while (count > 0) {
        const int end = static_cast<int>(std::min<std::size_t>(kNumbers, at + count));
        count -= end - at;
        for (; at < end; ++at) {
            state[at] += state[at < kNear ? at + kNumbers - kNear : at - kNear];
            *numbers++ = static_cast<int>(state[at] >> 1);
        }
        at = at == kNumbers ? 0 : at;
    }
    std::memcpy(_data.state, state, sizeof state);
    _data.fptr = _data.state + at;
    _data.rptr = _data.state + (at + kNumbers - kNear) % kNumbers;
}

#else

RandomRun::RandomRun() = default;
RandomRun::~RandomRun() = default;

void RandomRun::take(int* numbers, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        numbers[i] = next();
}

#endif

std::uint64_t randomDraws()
{
    return draws;
}

void restartRandomDraws()
{
    draws = 0;
}

} // namespace generators
