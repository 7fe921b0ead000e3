// The system log: single lines without prefix or level.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace foundation {

using LogSink = std::function<void(std::string_view line)>;

// Writes one line to the calling thread's own sink if it has one, else to the sink of all:
// standard error unless a host has set its own.
void log(std::string_view line);

// Replaces the sink and returns the former one; an empty sink restores standard error.
LogSink setLogSink(LogSink sink);

// The same for the calling thread alone. A host expects its sink to be called on the thread that it
// calls from itself: a thread of ours gathers its lines with this and hands them over.
LogSink setLogSinkOfThread(LogSink sink);

} // namespace foundation
