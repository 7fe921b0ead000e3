// cif apply: a filter, the steps of a recipe, or only another size, on a picture file.
#include "cli/Steps.h"

namespace cli {

Outcome<> apply(const ApplyOptions& options)
{
    const Outcome<Output> output = openOutput(options.output);
    if (!output)
        return std::unexpected(output.error());
    if (auto done = checkReplacing(options.input, *output, options.inPlace); !done)
        return done;

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
    if (options.resize)
        if (auto done = progress.resize(*options.resize); !done)
            return done;
    for (const Step& step : *steps)
        if (auto done = progress.run(step); !done)
            return done;
    if (options.crop)
        if (auto done = progress.crop(*options.crop); !done)
            return done;
    return progress.write(*output);
}

} // namespace cli
