// Standard error and standard output, and the library's log in between.
#include "cli/Report.h"

#include "platform/foundation/Log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace cli {

namespace {

Loudness loudness = Loudness::Normal;
std::string lastLine;

} // namespace

void startReporting(Loudness wanted)
{
    loudness = wanted;
    foundation::setLogSink([](std::string_view line) {
        lastLine = line;
        detail(line);
    });
}

std::string lastLogLine()
{
    return lastLine;
}

void detail(std::string_view text)
{
    if (loudness == Loudness::Verbose)
        std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

void printError(std::string_view text)
{
    std::string line(text);
    std::ranges::replace_if(
        line, [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
    std::fprintf(stderr, "cif: %s\n", line.c_str());
}

Outcome<> printResult(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        return noPicture(std::string("can't write to standard output: ") + std::strerror(errno));
    return {};
}

} // namespace cli
