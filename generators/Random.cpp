#include "generators/Random.h"

#include <cstdlib>

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

#else

RandomRun::RandomRun() = default;
RandomRun::~RandomRun() = default;

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
