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

std::uint64_t randomDraws()
{
    return draws;
}

void restartRandomDraws()
{
    draws = 0;
}

} // namespace generators
