// cif apply: a filter, or the steps of a recipe, on a picture file.
#include "cli/Steps.h"

namespace cli {

namespace {

bool isSameFile(const std::string& input, const Output& output)
{
    std::error_code error;
    return input != "-" && !output.file.empty() &&
           std::filesystem::equivalent(input, output.file, error);
}

} // namespace

Outcome<> apply(const ApplyOptions& options)
{
    const Outcome<Output> output = openOutput(options.output);
    if (!output)
        return std::unexpected(output.error());
    if (!options.inPlace && isSameFile(options.input, *output))
        return wrongUsage("OUTPUT is INPUT itself; add --in-place to replace it");

    CIFMain main;
    const Outcome<std::vector<Step>> steps = stepsOf(main, options.steps);
    if (!steps)
        return std::unexpected(steps.error());
    if (auto done = checkFormat(*steps, *output); !done)
        return done;
    const Outcome<codecs::PictureRef> input = readPicture(options.input);
    if (!input)
        return std::unexpected(input.error());

    Progress progress(main, options.steps, *input);
    for (const Step& step : *steps)
        if (auto done = progress.run(step); !done)
            return done;
    return progress.write(*output);
}

} // namespace cli
