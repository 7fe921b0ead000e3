// The command line's grammar, over the option package, which only this file includes.
#include "cli/Options.h"

#include "platform/imaging/Bitmap.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>

namespace cli {

namespace {

constexpr int kMaximumSide = imaging::Bitmap::kMaximumSide;

const char* const kExitStatus =
    "Exit status: 0 done, 1 a picture could not be read, made or written,\n"
    "2 wrong usage, 3 the editor was cancelled, 130 interrupted.";

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
    "  cif apply photo.jpg -o small.jpg --resize 160x120:fit\n"
    "\n"
    "Values: 5, 0.5, true, x,y[,z[,w]], r,g,b[,a] as fractions, #rrggbb[aa], a file name;\n"
    "textures, materials and brushes also by their library name.\n"
    "A recipe file has one step to a line: NAME KEY=VALUE … seed=N";

const char* const kGenerateExamples =
    "Examples:\n"
    "  cif generate GLIF_Plasma --size 640x480 -o plasma.png\n"
    "  cif generate GLIF_HilbertCurve --size 500x500 --seed 7 -o curve.svg\n"
    "  cif generate GLIF_Plasma --size 800x600 -o bands.png --set GLIFShapesType=2\n"
    "  cif generate --recipe-from plasma.png --size 64x64 -o small.png";

const char* const kEditExamples =
    "Examples:\n"
    "  cif edit photo.jpg -o edited.jpg\n"
    "  cif edit photo.jpg --in-place\n"
    "  cif edit --generate 800x600 -o drawn.svg --print-command\n"
    "\n"
    "Nothing is written when the window is cancelled or closed. A selection made with\n"
    "Crop is cut out of the result.";

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
    std::string resize, crop, generate;
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
    command
        .add_option("--then", steps.then, "A further step, written as in a recipe; may be repeated")
        ->allow_extra_args(false)
        ->type_name("'NAME KEY=VALUE …'");
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

// A new size, at the beginning or the end.
void addShape(CLI::App& command, Words& words, const char* resize)
{
    command.add_option("--resize", words.resize, resize)->type_name("WxH[:fit]");
    command
        .add_option("--crop", words.crop,
                    "Cut this rectangle out of the result: its left and bottom edge, width and "
                    "height, counted from the bottom left corner")
        ->type_name("X,Y,W,H");
}

void addInPlace(CLI::App& command, bool& inPlace)
{
    command.add_flag("--in-place", inPlace, "INPUT itself may be replaced");
}

Outcome<PixelSize> sizeOf(const char* option, std::string_view text, const char* forms)
{
    const std::size_t x = text.find_first_of("xX");
    const auto width = wholeNumber<std::int64_t>(text.substr(0, x));
    const auto height =
        x == std::string_view::npos ? std::nullopt : wholeNumber<std::int64_t>(text.substr(x + 1));
    if (!width || !height)
        return wrongUsage(std::string(option) + " takes " + forms + ", not " + inQuotes(text));
    if (*width < 1 || *height < 1 || *width > kMaximumSide || *height > kMaximumSide)
        return wrongUsage(std::string(option) + ' ' + std::string(text) +
                          " is out of range: a side is from 1 to " + std::to_string(kMaximumSide) +
                          " pixels");
    return PixelSize{static_cast<int>(*width), static_cast<int>(*height)};
}

Outcome<std::optional<Resizing>> resizingOf(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    constexpr std::string_view kFit = ":fit";
    Resizing resizing;
    resizing.asThumbnail = text.ends_with(kFit);
    const Outcome<PixelSize> size =
        sizeOf("--resize", text.substr(0, text.size() - (resizing.asThumbnail ? kFit.size() : 0)),
               "WxH such as 640x480, or 640x480:fit");
    if (!size)
        return std::unexpected(size.error());
    resizing.size = *size;
    return resizing;
}

Outcome<std::optional<foundation::Rect>> cropOf(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    double numbers[4] = {};
    const char* at = text.data();
    const char* const end = at + text.size();
    bool isGood = true;
    for (int i = 0; i < 4; ++i) {
        const auto r = std::from_chars(at, end, numbers[i]);
        const bool isLast = i == 3;
        isGood = isGood && r.ec == std::errc() && std::isfinite(numbers[i]) &&
                 (isLast ? r.ptr == end : r.ptr != end && *r.ptr == ',');
        if (!isGood)
            break;
        at = r.ptr + 1;
    }
    if (!isGood || !(numbers[2] > 0) || !(numbers[3] > 0))
        return wrongUsage("--crop takes X,Y,W,H such as 10,20,320,240, not " + inQuotes(text));
    return foundation::Rect{numbers[0], numbers[1], numbers[2], numbers[3]};
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
    // A new size or a crop is enough to do.
    const bool nothingElse = input && steps.recipeFile.empty() && words.second.empty() &&
                             (!words.resize.empty() || !words.crop.empty());
    const bool named = steps.recipeFile.empty() && !nothingElse;
    if (named && words.first.empty())
        return misused("NAME is missing");
    if (nothingElse && (!steps.set.empty() || !steps.then.empty()))
        return misused("--set and --then go with a NAME");
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

Outcome<> checkShape(auto& options, const Words& words)
{
    Outcome<std::optional<Resizing>> resize = resizingOf(words.resize);
    if (!resize)
        return std::unexpected(resize.error());
    Outcome<std::optional<foundation::Rect>> crop = cropOf(words.crop);
    if (!crop)
        return std::unexpected(crop.error());
    options.resize = *resize;
    options.crop = *crop;
    return {};
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
    if (auto done = checkShape(apply, words); !done)
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
    const Outcome<PixelSize> size = sizeOf("--size", words.size, "WxH such as 640x480");
    if (!size)
        return std::unexpected(size.error());
    generate.size = *size;
    if (auto done = checkShape(generate, words); !done)
        return done;
    if (generate.output.file.empty())
        return wrongUsage(std::string("-o OUTPUT is missing; usage: ") + usage);
    return checkOutput(generate.output, words);
}

Outcome<> checkEdit(EditOptions& edit, const Words& words)
{
    const char* const usage = "cif edit INPUT -o OUTPUT, or cif edit --generate WxH -o OUTPUT";
    const auto misused = [&](const std::string& what) {
        return wrongUsage(what + "; usage: " + usage);
    };
    if (!words.generate.empty()) {
        if (!words.first.empty())
            return misused(inQuotes(words.first) + " is one word too many: --generate begins with "
                                                   "a new picture");
        if (edit.inPlace)
            return misused("--in-place goes with an INPUT");
        const Outcome<PixelSize> size = sizeOf("--generate", words.generate, "WxH such as 640x480");
        if (!size)
            return std::unexpected(size.error());
        edit.generate = *size;
    } else if (words.first.empty()) {
        return misused("INPUT is missing");
    }
    edit.input = words.first;
    if (edit.output.file.empty() && edit.inPlace)
        edit.output.file = edit.input;
    if (edit.output.file.empty())
        return misused("-o OUTPUT is missing");
    if (edit.printCommand && edit.output.file == "-")
        return wrongUsage("--print-command writes to standard output, where the picture goes; "
                          "give OUTPUT a name");
    return checkOutput(edit.output, words);
}

// A first word that is neither a command nor an option.
const char* unknownCommand(int argc, const char* const* argv)
{
    if (argc < 2 || argv[1][0] == '-')
        return nullptr;
    for (const char* known : {"list", "describe", "apply", "generate", "edit"})
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
    EditOptions edit;

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
    applyCommand->add_option(
        "NAME", words.first,
        "Identifier of the filter or generator; left out with --recipe-from, and "
        "when --resize or --crop is all there is to do");
    applyCommand->add_option("INPUT", words.second, "The picture file, - for standard input");
    addSteps(*applyCommand, apply.steps, words);
    addOutput(*applyCommand, apply.output, words,
              "png, jpg, tif or webp; told by OUTPUT's extension unless given");
    addInPlace(*applyCommand, apply.inPlace);
    addShape(*applyCommand, words,
             "Bring the picture to this size in pixels first: stretched, or with :fit in its own "
             "proportions in the middle of white");
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
    addShape(*generateCommand, words,
             "Bring the result to this size in pixels, drawings afresh: stretched, or with :fit in "
             "its own proportions in the middle of white");
    generateCommand
        ->add_option("--trace", generate.traceFile,
                     "Also write the drawing operations, as JSON lines")
        ->type_name("FILE");
    generateCommand->footer(kGenerateExamples);

    CLI::App* const editCommand =
        app.add_subcommand("edit", "Work on a picture in the editor's window");
    editCommand->add_option("INPUT", words.first, "The picture file, - for standard input");
    editCommand
        ->add_option("--generate", words.generate,
                     "Begin with a new picture of this size, 1 to 100000 pixels a side, instead")
        ->type_name("WxH");
    addOutput(*editCommand, edit.output, words,
              "png, jpg, tif or webp, and pdf, svg or eps for pictures that are drawn; told by "
              "OUTPUT's extension unless given");
    addInPlace(*editCommand, edit.inPlace);
    editCommand->add_flag("--print-command", edit.printCommand,
                          "Also print the command line that makes the same file again");
    editCommand->footer(kEditExamples);

    for (CLI::App* command :
         {listCommand, describeCommand, applyCommand, generateCommand, editCommand})
        addLoudness(*command, words);

    if (argc < 2)
        return wrongUsage("no command is given; it is list, describe, apply, generate or edit");
    if (const char* word = unknownCommand(argc, argv))
        return wrongUsage("there is no command " + inQuotes(word) +
                          "; it is list, describe, apply, generate or edit");
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
    if (editCommand->parsed()) {
        Outcome<> checked = checkEdit(edit, words);
        return finish(std::move(checked), edit);
    }
    Outcome<> checked = checkGenerate(generate, words);
    return finish(std::move(checked), generate);
}

} // namespace cli
