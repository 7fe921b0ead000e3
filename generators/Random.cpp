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

namespace {

// Every number is the sum of those 31 and 3 before it, and is handed out without its lowest bit.
constexpr int kHeld = 31, kNear = 3;

// Goes on from the entry `at` to `end` of the last numbers, the oldest of which is at `at`.
void continueSequence(std::uint32_t* held, int at, int end, int* numbers)
{
    for (; at < end; ++at) {
        held[at] += held[at < kNear ? at + kHeld - kNear : at - kNear];
        *numbers++ = static_cast<int>(held[at] >> 1);
    }
}

// The same all round, three sums side by side that never wait for memory.
void continueRound(std::uint32_t* held, int* numbers)
{
    std::uint32_t a = held[kHeld - 3], b = held[kHeld - 2], c = held[kHeld - 1];
    const auto step = [&](std::uint32_t& sum, int at) {
        sum += held[at];
        held[at] = sum;
        numbers[at] = static_cast<int>(sum >> 1);
    };
    for (int at = 0; at < kHeld - 1; at += 3) {
        step(a, at);
        step(b, at + 1);
        step(c, at + 2);
    }
    step(a, kHeld - 1);
}

} // namespace

void RandomRun::take(int* numbers, std::size_t count)
{
    if (_data.rand_deg != kHeld || _data.rand_sep != kNear) {
        for (std::size_t i = 0; i < count; ++i)
            numbers[i] = next();
        return;
    }
    _draws += count;
    std::uint32_t held[kHeld];
    std::memcpy(held, _data.state, sizeof held);
    int at = static_cast<int>(_data.fptr - _data.state);
    while (count > 0) {
        const int end = static_cast<int>(std::min<std::size_t>(kHeld, at + count));
        if (end - at == kHeld)
            continueRound(held, numbers);
        else
            continueSequence(held, at, end, numbers);
        numbers += end - at;
        count -= end - at;
        at = end == kHeld ? 0 : end;
    }
    std::memcpy(_data.state, held, sizeof held);
    _data.fptr = _data.state + at;
    _data.rptr = _data.state + (at + kHeld - kNear) % kHeld;
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
