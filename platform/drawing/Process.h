// Helper programs, run without a shell.
#pragma once

#include "platform/foundation/Result.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drawing {

// The program of that name in the folders of PATH (absolute ones only), if there is one.
std::optional<std::filesystem::path> findProgram(std::string_view name);

struct ProcessLimits {
    std::chrono::milliseconds time;
    std::size_t outputBytes;
};

// Runs the program with the given arguments and bytes on its standard input and answers what it
// wrote to standard output; standard error is dropped. The bytes are a file to the program, which
// may seek; its folder for temporary files is its own and removed afterwards. An error when the
// program cannot be started, does not end within the time (it is then killed), writes more than the
// limit or ends with a status other than 0.
foundation::Result<std::string> runProgram(const std::filesystem::path& program,
                                           const std::vector<std::string>& arguments,
                                           std::string_view input, const ProcessLimits& limits);

} // namespace drawing
