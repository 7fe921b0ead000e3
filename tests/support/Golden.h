// Golden pictures: results that were looked at once, and are compared with ever after.
#pragma once

#include "tests/support/Support.h"

#include <string_view>

namespace support {

// How far a picture may be from its golden, in 8-bit levels (a colour's difference counts by its
// alpha). Exact unless a test says otherwise.
struct Tolerance {
    double largest = 0;
    double mean = 255;
};

// Fails the test unless tests/golden/<name>.png exists and the bitmap, rounded to 8 bits, is that
// picture. Leaves a record for the review page (./dev golden) in the build tree's
// test-output/golden: <name>.txt with the errors, and, unless the two are identical,
// <name>.actual.png and <name>.difference.png (times 16, on grey). A name is of letters, digits and
// "-_.+".
void expectGolden(std::string_view name, const imaging::Bitmap& actual, Tolerance tolerance = {});

// The name of the golden of a filter applied to a named picture: "CIFSobel-photo-96x64", and the
// inputs that differ from the defaults, "…-inputFactorX-0.4".
std::string goldenName(std::string_view filter, std::string_view pictureName,
                       const Dictionary& inputs);

bool registerGolden(const char* file, int line, std::string_view filter,
                    std::string_view pictureName, const Dictionary& inputs = {},
                    Tolerance tolerance = {});

} // namespace support

// A test of its own that applies a filter to a named picture and compares with the golden:
//   GOLDEN("CIFSlideFrameFilter", "photo-96x64", {{"inputFactorX", 0.4f}});
//   GOLDEN("CIGaussianBlur", "edges-64x48", {{"inputRadius", 3}}, {.largest = 1});
#define GOLDEN(...) CIF_GOLDEN_AT(__LINE__, __VA_ARGS__)
#define CIF_GOLDEN_AT(line, ...) CIF_GOLDEN_NAMED(line, __VA_ARGS__)
#define CIF_GOLDEN_NAMED(line, ...)                                                                \
    [[maybe_unused]] static const bool goldenOfLine##line =                                        \
        support::registerGolden(__FILE__, line, __VA_ARGS__)
