// How commands end and what they tell: results on standard output, everything else on standard
// error.
#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace cli {

enum ExitStatus { kDone = 0, kNoPicture = 1, kWrongUsage = 2, kCancelled = 3, kInterrupted = 130 };

struct Failure {
    ExitStatus status;
    std::string text; // what is wrong and what would be right, on one line
};

template <class T = void>
using Outcome = std::expected<T, Failure>;

inline std::unexpected<Failure> noPicture(std::string text)
{
    return std::unexpected(Failure{kNoPicture, std::move(text)});
}

inline std::unexpected<Failure> wrongUsage(std::string text)
{
    return std::unexpected(Failure{kWrongUsage, std::move(text)});
}

inline std::string inQuotes(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

enum class Loudness { Quiet, Normal, Verbose };

// Takes over the library's log, so that an error stays one line.
void startReporting(Loudness loudness);

// The last line that the library has logged, empty if none; a failure's own reason.
std::string lastLogLine();

// A line for those who asked for more.
void detail(std::string_view text);

// "cif: " and the text, with whatever would break the line replaced.
void printError(std::string_view text);

// The whole result of a command.
Outcome<> printResult(std::string_view text);

} // namespace cli
