// The command line's grammar, over the option package, which only this file includes.
#include "cli/Options.h"

#include "platform/imaging/Bitmap.h"

#include <CLI/CLI.hpp>

#include <charconv>

namespace cli {

namespace {

constexpr int kMaximumSide = imaging::Bitmap::kMaximumSide;

const char* const kExitStatus =
    "Exit status: 0 done, 1 a picture could not be read, made or written,\n"
    "2 wrong usage, 130 interrupted.";

const char* const kListExamples =
    "Examples:\n"
    "  cif list\n"
    "  cif list generators\n"
    "  cif list --resources\n"
    "  cif list --json | jq '.effectsSets[0].categories[].CIFCategoryName'";

const char* const kDescribeExamples = "Examples:\n"
                                      "  cif describe CISunbeamsGenerator\n"
                                      "  cif describe GLIF_Plasma --json";

const char* const kApplyExamples =
    "Examples:\n"
    "  cif apply CIGaussianBlur photo.jpg -o soft.png --set inputRadius=5\n"
    "  cif apply CISunbeamsGenerator photo.jpg -o sun.png --set inputCenter=320,240\n"
    "  cif apply CIShadedMaterial relief.png -o metal.tif --set inputShadingImage=ball.png\n"
    "  cif apply CIFSobel - -o - --format png < photo.png > edges.png\n"
    "  cif apply --recipe-from soft.png other.jpg -o other-soft.png\n"
    "\n"
    "Values: 5, 0.5, true, x,y[,z[,w]], r,g,b[,a] as fractions, #rrggbb[aa], a file name;\n"
    "textures, materials and brushes also by their library name.\n"
    "A recipe file has one step to a line: IDENTIFIER KEY=VALUE …";

const char* const kGenerateExamples =
    "Examples:\n"
    "  cif generate GLIF_Plasma --size 640x480 -o plasma.png\n"
    "  cif generate GLIF_HilbertCurve --size 500x500 --seed 7 -o curve.svg\n"
    "  cif generate GLIF_Plasma --size 800x600 -o bands.png --set GLIFShapesType=2\n"
    "  cif generate --recipe-from plasma.png --size 64x64 -o small.png";

template <class Integer>
std::optional<Integer> wholeNumber(std::string_view text)
{
    Integer n = 0;
    const auto r = std::from_chars(text.data(), text.data() + text.size(), n);
    if (r.ec != std::errc() || r.ptr != text.data() + text.size())
        return std::nullopt;
    return n;
}

// What the option package collects before it is looked at.
struct Words {
    std::string listWhat, toolkitVersion;
    std::string first, second; // without a dash, after the command
    std::string seed, size, quality;
    bool quiet = false, verbose = false;
};

void addLoudness(CLI::App& command, Words& words)
{
    command.add_flag("-q,--quiet", words.quiet, "Nothing but errors");
    command.add_flag("-v,--verbose", words.verbose, "Tell more on standard error");
}

void addSteps(CLI::App& command, StepOptions& steps, Words& words)
{
    command.add_option("--set", steps.set, "Set a parameter, KEY=VALUE; may be repeated")
        ->allow_extra_args(false)
        ->type_name("KEY=VALUE");
    command.add_flag("--no-defaults", steps.noDefaults,
                     "Hand over only what --set gives, no starting values");
    command.add_flag("--unchecked", steps.unchecked,
                     "Hand over values of any kind, range and key as they stand");
    command
        .add_option("--recipe-from", steps.recipeFile,
                    "Repeat the steps of a recipe file, or of a picture that carries one")
        ->type_name("FILE");
    command.add_option("--seed", words.seed, "Seed of the random sequence, 0 unless given")
        ->type_name("N");
}

void addOutput(CLI::App& command, OutputOptions& output, Words& words, const char* formats)
{
    command.add_option("-o,--output", output.file, "The file to write, - for standard output")
        ->type_name("OUTPUT");
    command.add_option("--format", output.format, formats)->type_name("F");
    command
        .add_option("--metadata", output.metadata,
                    "Metadata to keep: all, icc (the colour profile alone) or none; all but none "
                    "also carry the recipe")
        ->type_name("all|icc|none");
    command
        .add_option("--quality", words.quality,
                    "Of JPEG and WebP, 1 to 100, 92 unless given; WebP is lossless at 100")
        ->type_name("N");
}

Outcome<> checkSteps(StepOptions& steps, const Words& words)
{
    if (!words.seed.empty()) {
        steps.seed = wholeNumber<std::uint32_t>(words.seed);
        if (!steps.seed)
            return wrongUsage("--seed takes a whole number from 0 to 4294967295, not " +
                              inQuotes(words.seed));
    }
    if (!steps.recipeFile.empty() && !steps.set.empty())
        return wrongUsage(
            "--set goes with a NAME, not with --recipe-from; change the recipe instead");
    return {};
}

Outcome<> checkOutput(OutputOptions& output, const Words& words)
{
    if (!words.quality.empty()) {
        const auto quality = wholeNumber<int>(words.quality);
        if (!quality || *quality < 1 || *quality > 100)
            return wrongUsage("--quality takes a whole number from 1 to 100, not " +
                              inQuotes(words.quality));
        output.quality = *quality;
    }
    if (output.metadata != "all" && output.metadata != "icc" && output.metadata != "none")
        return wrongUsage("--metadata takes all, icc or none, not " + inQuotes(output.metadata));
    return {};
}

// NAME, which a recipe file replaces, and INPUT, where the command takes one.
Outcome<> takePositionals(const char* usage, StepOptions& steps, std::string* input,
                          const Words& words)
{
    const auto misused = [&](const std::string& what) {
        return wrongUsage(what + "; usage: " + usage);
    };
    const bool named = steps.recipeFile.empty();
    if (named && words.first.empty())
        return misused("NAME is missing");
    const std::string& tooMany = !named && input ? words.second : !named ? words.first : "";
    if (!tooMany.empty())
        return misused(inQuotes(tooMany) + " is one word too many: the recipe names its steps");
    if (named)
        steps.name = words.first;
    if (!input)
        return {};
    *input = named ? words.second : words.first;
    return input->empty() ? Outcome<>(misused("INPUT is missing")) : Outcome<>();
}

Outcome<> checkList(ListOptions& list, const Words& words)
{
    if (words.listWhat == "filters")
        list.effectsSet = 0;
    else if (words.listWhat == "generators")
        list.effectsSet = 1;
    else if (!words.listWhat.empty())
        return wrongUsage("there is no list of " + inQuotes(words.listWhat) +
                          "; it is filters or generators, or nothing for both");
    if (list.resources && list.effectsSet)
        return wrongUsage("--resources lists the content library, not " + inQuotes(words.listWhat));
    if (!words.toolkitVersion.empty()) {
        const std::string& text = words.toolkitVersion;
        double version = 0;
        const auto r = std::from_chars(text.data(), text.data() + text.size(), version);
        if (r.ec != std::errc() || r.ptr != text.data() + text.size() || !(version >= 0))
            return wrongUsage("--toolkit-version takes a number such as 949, not " +
                              inQuotes(text));
        list.toolkitVersion = version;
    }
    return {};
}

Outcome<> checkApply(ApplyOptions& apply, const Words& words)
{
    const char* const usage = "cif apply NAME INPUT -o OUTPUT [--set KEY=VALUE]…";
    if (auto done = checkSteps(apply.steps, words); !done)
        return done;
    if (auto done = takePositionals(usage, apply.steps, &apply.input, words); !done)
        return done;
    if (apply.output.file.empty() && apply.inPlace)
        apply.output.file = apply.input;
    if (apply.output.file.empty())
        return wrongUsage(std::string("-o OUTPUT is missing; usage: ") + usage);
    return checkOutput(apply.output, words);
}

Outcome<> checkGenerate(GenerateOptions& generate, const Words& words)
{
    const char* const usage = "cif generate NAME --size WxH -o OUTPUT [--set KEY=VALUE]…";
    if (auto done = checkSteps(generate.steps, words); !done)
        return done;
    if (auto done = takePositionals(usage, generate.steps, nullptr, words); !done)
        return done;
    if (words.size.empty())
        return wrongUsage(std::string("--size WxH is missing; usage: ") + usage);
    const std::size_t x = words.size.find_first_of("xX");
    const auto width = wholeNumber<std::int64_t>(std::string_view(words.size).substr(0, x));
    const auto height = x == std::string::npos
                            ? std::nullopt
                            : wholeNumber<std::int64_t>(std::string_view(words.size).substr(x + 1));
    if (!width || !height)
        return wrongUsage("--size takes WxH such as 640x480, not " + inQuotes(words.size));
    if (*width < 1 || *height < 1 || *width > kMaximumSide || *height > kMaximumSide)
        return wrongUsage("--size " + words.size + " is out of range: a side is from 1 to " +
                          std::to_string(kMaximumSide) + " pixels");
    generate.width = static_cast<int>(*width);
    generate.height = static_cast<int>(*height);
    if (generate.output.file.empty())
        return wrongUsage(std::string("-o OUTPUT is missing; usage: ") + usage);
    return checkOutput(generate.output, words);
}

// A first word that is neither a command nor an option.
const char* unknownCommand(int argc, const char* const* argv)
{
    if (argc < 2 || argv[1][0] == '-')
        return nullptr;
    for (const char* known : {"list", "describe", "apply", "generate"})
        if (argv[1] == std::string_view(known))
            return nullptr;
    return argv[1];
}

} // namespace

Outcome<Invocation> parseCommandLine(int argc, const char* const* argv)
{
    Words words;
    ListOptions list;
    DescribeOptions describe;
    ApplyOptions apply;
    GenerateOptions generate;

    CLI::App app("Image filters and picture generators on the command line.", "cif");
    app.set_version_flag("--version", "cif " CIF_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    app.footer(std::string("cif COMMAND --help tells more about a command.\n") + kExitStatus);
    addLoudness(app, words);

    CLI::App* const listCommand = app.add_subcommand("list", "List the filters and generators");
    listCommand->add_option("WHAT", words.listWhat, "filters or generators; both unless given");
    listCommand->add_flag("--resources", list.resources,
                          "List the glass textures, shading materials and brushes instead");
    listCommand->add_flag("--json", list.json, "Everything that is known, as JSON");
    listCommand
        ->add_option("--toolkit-version", words.toolkitVersion,
                     "List what exists with that platform version; below 949 there are fewer")
        ->type_name("N");
    listCommand->footer(kListExamples);

    CLI::App* const describeCommand =
        app.add_subcommand("describe", "Tell what a filter or generator takes");
    describeCommand->add_option("NAME", describe.name, "Identifier, as cif list shows it");
    describeCommand->add_flag("--json", describe.json, "The attribute descriptions as JSON");
    describeCommand->footer(kDescribeExamples);

    CLI::App* const applyCommand = app.add_subcommand("apply", "Apply a filter to a picture file");
    applyCommand->add_option("NAME", words.first,
                             "Identifier of the filter or generator; left out with --recipe-from");
    applyCommand->add_option("INPUT", words.second, "The picture file, - for standard input");
    addSteps(*applyCommand, apply.steps, words);
    addOutput(*applyCommand, apply.output, words,
              "png, jpg, tif or webp; told by OUTPUT's extension unless given");
    applyCommand->add_flag("--in-place", apply.inPlace, "INPUT itself may be replaced");
    applyCommand->footer(kApplyExamples);

    CLI::App* const generateCommand = app.add_subcommand("generate", "Make a new picture");
    generateCommand->add_option("NAME", words.first,
                                "Identifier of the generator; left out with --recipe-from");
    generateCommand->add_option("--size", words.size, "Width and height in pixels, 1 to 100000")
        ->type_name("WxH");
    addSteps(*generateCommand, generate.steps, words);
    addOutput(*generateCommand, generate.output, words,
              "png, jpg, tif or webp, and pdf, svg or eps for pictures that are drawn; told by "
              "OUTPUT's extension unless given");
    generateCommand
        ->add_option("--trace", generate.traceFile,
                     "Also write the drawing operations, as JSON lines")
        ->type_name("FILE");
    generateCommand->footer(kGenerateExamples);

    for (CLI::App* command : {listCommand, describeCommand, applyCommand, generateCommand})
        addLoudness(*command, words);

    if (argc < 2)
        return wrongUsage("no command is given; it is list, describe, apply or generate");
    if (const char* word = unknownCommand(argc, argv))
        return wrongUsage("there is no command " + inQuotes(word) +
                          "; it is list, describe, apply or generate");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return Invocation{Information{app.help()}};
    } catch (const CLI::CallForVersion&) {
        return Invocation{Information{"cif " CIF_VERSION "\n"}};
    } catch (const CLI::ParseError& e) {
        const auto given = app.get_subcommands();
        const auto remaining = app.remaining(true);
        return wrongUsage(
            (remaining.empty() ? std::string(e.what())
                               : inQuotes(remaining.front()) + " is not understood here") +
            "; see cif " + (given.empty() ? "" : given.front()->get_name() + " ") + "--help");
    }

    Invocation invocation;
    if (words.quiet || words.verbose)
        invocation.loudness = words.verbose ? Loudness::Verbose : Loudness::Quiet;
    const auto finish = [&](Outcome<> checked, auto options) -> Outcome<Invocation> {
        if (!checked)
            return std::unexpected(std::move(checked).error());
        invocation.command = std::move(options);
        return invocation;
    };
    if (listCommand->parsed()) {
        Outcome<> checked = checkList(list, words);
        return finish(std::move(checked), list);
    }
    if (describeCommand->parsed()) {
        if (describe.name.empty())
            return wrongUsage("NAME is missing; usage: cif describe NAME [--json]");
        return finish({}, describe);
    }
    if (applyCommand->parsed()) {
        Outcome<> checked = checkApply(apply, words);
        return finish(std::move(checked), apply);
    }
    Outcome<> checked = checkGenerate(generate, words);
    return finish(std::move(checked), generate);
}

} // namespace cli
