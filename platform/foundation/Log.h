// The system log: single lines without prefix or level.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace foundation {

using LogSink = std::function<void(std::string_view line)>;

// Writes one line to the sink, standard error unless a host has set its own.
void log(std::string_view line);

// Replaces the sink and returns the former one; an empty sink restores standard error.
LogSink setLogSink(LogSink sink);

} // namespace foundation
