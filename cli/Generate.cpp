// cif generate: a new picture from a generator, or from a recipe that begins with one.
#include "cli/Steps.h"
#include "platform/drawing/Canvas.h"
#include "plugin/Resizing.h"

namespace cli {

namespace {

std::string traceOf(const drawing::Picture& picture, std::uint64_t randomDraws)
{
    std::string trace;
    if (const drawing::RecordingRef recording = picture.recording())
        trace = drawing::traceOf(*recording);
    if (!trace.empty() && !trace.ends_with('\n'))
        trace += '\n';
    return trace + "{\"rand_calls\":" + std::to_string(randomDraws) + "}\n";
}

} // namespace

Outcome<> generate(const GenerateOptions& options)
{
    const Outcome<Output> output = openOutput(options.output);
    if (!output)
        return std::unexpected(output.error());
    const std::filesystem::path traceFile = options.traceFile;
    if (!traceFile.empty())
        if (auto done = checkWritable(traceFile); !done)
            return done;

    CIFMain main;
    const Outcome<std::vector<Step>> steps = stepsOf(main, options.steps);
    if (!steps)
        return std::unexpected(steps.error());
    const plugin::Entry& first = steps->front().entry;
    if (!first.isGenerator)
        return wrongUsage(first.identifier + " is a filter and needs a picture: use cif apply");
    if (auto done = checkFormat(*steps, *output); !done)
        return done;
    if (const auto fits = plugin::fitsMemory(options.size.width, options.size.height); !fits)
        return noPicture(fits.error());

    Progress progress(main, options.steps, nullptr);
    progress.startWithSize({double(options.size.width), double(options.size.height)});
    std::string trace;
    for (const Step& step : *steps) {
        if (auto done = progress.run(step); !done)
            return done;
        if (trace.empty() && !traceFile.empty())
            trace = traceOf(*progress.picture(), progress.randomDraws());
    }
    if (options.resize)
        if (auto done = progress.resize(*options.resize); !done)
            return done;
    if (options.crop)
        if (auto done = progress.crop(*options.crop); !done)
            return done;
    if (traceFile.empty())
        return progress.write(*output);

    // The trace goes first and is taken back when the picture fails, so that no half of a result
    // stays behind.
    std::error_code error;
    const bool traceIsNew = !std::filesystem::exists(traceFile, error);
    if (auto done = writeText(traceFile, trace); !done)
        return done;
    Outcome<> done = progress.write(*output);
    if (!done && traceIsNew)
        std::filesystem::remove(traceFile, error);
    return done;
}

} // namespace cli
