// The random sequence of the generators: the C library's own, counted.
//
// Whoever asks for a picture seeds it with srand immediately before. The order of the draws is part
// of the picture, so write one draw to a statement: C++ does not order the arguments of a call.
#pragma once

#include <cstdint>

namespace generators {

// One call of rand: 0 to 2147483647.
int randomInt();

// One call of rand as a fraction of 2^31, in single precision: 0 to 1. The largest draws round up
// to exactly 1.
float randomUnit();

// Draws since the last picture was begun.
std::uint64_t randomDraws();

// Counts from 0 again; the generators' base does so when a picture is begun.
void restartRandomDraws();

} // namespace generators
