// Timing and reporting that all benchmark programs share.
#pragma once

#include "platform/imaging/Bitmap.h"

#include <functional>
#include <string>
#include <vector>

namespace bench {

// One measured entry.
struct Row {
    std::string name;
    double megapixels = 0;
    double milliseconds = 0; // median of the settled runs
    double best = 0;         // the quickest run
    int runs = 0;
};

// Runs the work until its median settles (at least 5 runs and a quarter of a second, at most 4
// seconds) after one run that does not count.
Row measure(const std::string& name, double megapixels, const std::function<void()>& work);

// The rows as a table on standard output; as JSON in the file when one is named.
void report(const std::vector<Row>& rows, const std::string& jsonFile);

// What the command line asks for: [--json FILE] [--size MEGAPIXELS]… [PATTERN].
struct Arguments {
    std::string jsonFile;
    std::vector<int> megapixels{1, 12};
    std::string pattern; // part of a name; empty for all
};
Arguments parse(int argc, char** argv);

// An opaque 8-bit picture of 4:3 with gradients, edges and noise: 1 gives 1156 × 865 pixels, 12
// gives 4000 × 3000.
imaging::BitmapRef testPicture(int megapixels);

} // namespace bench
