// The commands and what each is told to do.
#pragma once

#include "cli/Report.h"
#include "platform/foundation/Geometry.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct ListOptions {
    std::optional<std::uint32_t> effectsSet; // both unless given
    bool resources = false;                  // the content library instead of the catalogues
    bool json = false;
    std::optional<double> toolkitVersion;
};

struct DescribeOptions {
    std::string name;
    bool json = false;
};

// What is done to the picture: one step by name, or the steps of a file.
struct StepOptions {
    std::string name;             // empty when there is a recipe file
    std::vector<std::string> set; // KEY=VALUE
    bool noDefaults = false;
    bool unchecked = false;
    std::vector<std::string> then; // further steps, each a line of a recipe
    std::string recipeFile;        // a recipe or a picture that carries one
    std::optional<std::uint32_t> seed;
};

struct OutputOptions {
    std::string file;   // "-" for standard output
    std::string format; // told by the file's extension when empty
    std::string metadata = "all";
    int quality = 92;
};

struct PixelSize {
    int width = 0, height = 0;
};

struct Resizing {
    PixelSize size;
    bool asThumbnail = false; // fitted on white, not stretched
};

struct ApplyOptions {
    StepOptions steps;                    // without a name or a recipe there are none
    std::string input;                    // "-" for standard input
    std::optional<Resizing> resize;       // before the steps
    std::optional<foundation::Rect> crop; // of the result, in points, y up
    OutputOptions output;
    bool inPlace = false;
};

struct GenerateOptions {
    StepOptions steps;
    PixelSize size;
    std::optional<Resizing> resize;       // after the steps
    std::optional<foundation::Rect> crop; // then
    OutputOptions output;
    std::string traceFile;
};

struct EditOptions {
    std::string input;                 // "-" for standard input; not when a new picture is made
    std::optional<PixelSize> generate; // its size
    OutputOptions output;
    bool inPlace = false;
    bool printCommand = false;
};

Outcome<> list(const ListOptions& options);
Outcome<> describe(const DescribeOptions& options);
Outcome<> apply(const ApplyOptions& options);
Outcome<> generate(const GenerateOptions& options);
Outcome<> edit(const EditOptions& options);

} // namespace cli
