// Reads files whole, writes them atomically, and holds interrupts off while it does.
#include "cli/Files.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace cli {

namespace fs = std::filesystem;

namespace {

// More than any picture file is, less than memory holds: a pipe may never end.
constexpr std::size_t kLargestInput = std::size_t{1} << 30;

volatile std::sig_atomic_t isWriting = 0;
volatile std::sig_atomic_t heldSignal = 0;

extern "C" void onInterrupt(int signal)
{
    if (isWriting)
        heldSignal = signal;
    else
        _exit(128 + signal);
}

// While one lives, an interrupt waits: a file is either left alone or complete.
class WritingSection {
public:
    WritingSection() { isWriting = 1; }
    ~WritingSection()
    {
        isWriting = 0;
        if (heldSignal)
            _exit(128 + heldSignal);
    }
    WritingSection(const WritingSection&) = delete;
    WritingSection& operator=(const WritingSection&) = delete;
};

struct Closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

std::string reason()
{
    return std::strerror(errno);
}

Outcome<std::string> readStream(std::FILE* stream, const std::string& shown, std::size_t limit,
                                ExitStatus status)
{
    std::string bytes;
    char buffer[1 << 16];
    while (const std::size_t n = std::fread(buffer, 1, sizeof buffer, stream)) {
        if (bytes.size() + n > limit)
            return std::unexpected(Failure{status, shown + " is too large: more than " +
                                                       std::to_string(limit >> 20) + " MB"});
        bytes.append(buffer, n);
    }
    if (std::ferror(stream))
        return std::unexpected(Failure{status, "can't read " + shown + ": " + reason()});
    return bytes;
}

Outcome<> writeStream(std::FILE* stream, const std::string& shown, std::string_view bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), stream) != bytes.size() ||
        std::fflush(stream) != 0)
        return noPicture("can't write to " + shown + ": " + reason());
    return {};
}

// A link is written through, so that it stays one.
fs::path throughLinks(const fs::path& file)
{
    std::error_code error;
    const fs::path real = fs::canonical(file, error);
    return error ? file : real;
}

Outcome<> writeBytes(const fs::path& file, bool isStream, std::string_view bytes)
{
    const std::string shown = file.empty() ? "standard output" : inQuotes(file.string());
    if (file.empty())
        return writeStream(stdout, shown, bytes);
    if (isStream) {
        const std::unique_ptr<std::FILE, Closer> stream(std::fopen(file.c_str(), "wb"));
        if (!stream)
            return noPicture("can't write to " + shown + ": " + reason());
        return writeStream(stream.get(), shown, bytes);
    }
    const WritingSection section;
    const foundation::Status done = codecs::writeFileAtomically(file, bytes);
    return done ? Outcome<>() : noPicture(done.error());
}

} // namespace

void watchInterrupts()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        action.sa_handler = onInterrupt;
        action.sa_flags = SA_RESTART;
        // What the caller has switched off (nohup) stays off.
        struct sigaction former = {};
        if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

Outcome<std::string> readFile(const std::string& name, std::size_t limit, ExitStatus status)
{
    const std::unique_ptr<std::FILE, Closer> stream(std::fopen(name.c_str(), "rb"));
    if (!stream)
        return std::unexpected(Failure{status, "can't read " + inQuotes(name) + ": " + reason()});
    return readStream(stream.get(), inQuotes(name), limit, status);
}

Outcome<codecs::PictureRef> readPicture(const std::string& name)
{
    std::error_code error;
    const bool isPipe = name == "-" || fs::is_fifo(name, error);
    if (!isPipe) {
        foundation::Result<codecs::PictureRef> picture = codecs::readPicture(name);
        return picture ? Outcome<codecs::PictureRef>(*std::move(picture))
                       : noPicture(picture.error());
    }
    const std::string shown = name == "-" ? "standard input" : name;
    const Outcome<std::string> bytes = name == "-"
                                           ? readStream(stdin, shown, kLargestInput, kNoPicture)
                                           : readFile(name, kLargestInput, kNoPicture);
    if (!bytes)
        return std::unexpected(bytes.error());
    foundation::Result<codecs::PictureRef> picture = codecs::decodePicture(*bytes, shown);
    return picture ? Outcome<codecs::PictureRef>(*std::move(picture)) : noPicture(picture.error());
}

Outcome<> checkWritable(const fs::path& file)
{
    const std::string shown = inQuotes(file.string());
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (fs::is_directory(status))
        return noPicture("can't write to " + shown + ": it is a folder");
    const fs::path parent = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (!fs::is_directory(parent, error))
        return noPicture("can't write to " + shown + ": there is no folder " +
                         inQuotes(parent.string()));
    const bool isStream = fs::exists(status) && !fs::is_regular_file(status);
    if (access((isStream ? file : parent).c_str(), W_OK) != 0)
        return noPicture("can't write to " + shown + ": " + reason());
    return {};
}

Outcome<Output> openOutput(const OutputOptions& options)
{
    Output output;
    output.options.quality = options.quality;
    output.options.metadata = options.metadata == "none"  ? codecs::KeepMetadata::None
                              : options.metadata == "icc" ? codecs::KeepMetadata::Icc
                                                          : codecs::KeepMetadata::All;
    const char* const known = "png, jpg, tif, webp, pdf, svg or eps";
    if (!options.format.empty()) {
        const auto format = codecs::formatNamed(options.format);
        if (!format)
            return wrongUsage("there is no format " + inQuotes(options.format) + "; it is " +
                              known);
        output.format = *format;
    }
    if (options.file == "-") {
        if (options.format.empty())
            return wrongUsage(std::string("standard output needs a --format: ") + known);
        return output;
    }
    output.file = throughLinks(options.file);
    if (options.format.empty()) {
        std::string extension = fs::path(options.file).extension().string();
        extension.erase(0, 1);
        const auto format = codecs::formatNamed(extension);
        if (!format)
            return wrongUsage("the name " + inQuotes(options.file) +
                              " does not tell the format; end it in png, jpg, tif, webp, pdf, svg "
                              "or eps, or add --format");
        output.format = *format;
    }
    if (auto done = checkWritable(output.file); !done)
        return std::unexpected(done.error());
    std::error_code error;
    const fs::file_status status = fs::status(output.file, error);
    output.isStream = fs::exists(status) && !fs::is_regular_file(status);
    return output;
}

Outcome<> write(const Output& output, const drawing::Picture& picture)
{
    const foundation::Result<std::string> bytes =
        codecs::encodePicture(picture, output.format, output.options);
    if (!bytes)
        return noPicture((output.file.empty() ? "" : output.file.filename().string() + ": ") +
                         bytes.error());
    return writeBytes(output.file, output.isStream, *bytes);
}

Outcome<> writeText(const fs::path& file, std::string_view text)
{
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    return writeBytes(throughLinks(file), fs::exists(status) && !fs::is_regular_file(status), text);
}

} // namespace cli
