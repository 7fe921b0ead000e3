// The system log's sinks. Unguarded, like all state that the caller's thread owns.
#include "platform/foundation/Log.h"

#include <cstdio>
#include <utility>

namespace foundation {

namespace {

LogSink& currentSink()
{
    static LogSink sink;
    return sink;
}

LogSink& sinkOfThread()
{
    thread_local LogSink sink;
    return sink;
}

} // namespace

void log(std::string_view line)
{
    if (sinkOfThread())
        sinkOfThread()(line);
    else if (currentSink())
        currentSink()(line);
    else
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

LogSink setLogSink(LogSink sink)
{
    return std::exchange(currentSink(), std::move(sink));
}

LogSink setLogSinkOfThread(LogSink sink)
{
    return std::exchange(sinkOfThread(), std::move(sink));
}

} // namespace foundation
