// The words of the command line, understood.
#pragma once

#include "cli/Commands.h"

#include <variant>

namespace cli {

// Help or the version was asked for: the text to print.
struct Information {
    std::string text;
};

struct Invocation {
    std::variant<Information, ListOptions, DescribeOptions, ApplyOptions, GenerateOptions,
                 EditOptions>
        command;
    Loudness loudness = Loudness::Normal;
};

Outcome<Invocation> parseCommandLine(int argc, const char* const* argv);

} // namespace cli
