// Picture files in and out.
#pragma once

#include "cli/Commands.h"
#include "platform/codecs/Codecs.h"

namespace cli {

// From now on an interrupt ends the process with 130, but never in the middle of writing a file.
void watchInterrupts();

// The whole file; a folder, a missing file and one beyond `limit` bytes are failures of the status
// given.
Outcome<std::string> readFile(const std::string& name, std::size_t limit, ExitStatus status);

// "-" is standard input.
Outcome<codecs::PictureRef> readPicture(const std::string& name);

// Where a picture goes and how it is written, checked before any work is done.
struct Output {
    std::filesystem::path file; // empty for standard output
    codecs::FileFormat format = codecs::FileFormat::Png;
    codecs::WriteOptions options;
    bool isStream = false; // a device or pipe, which can't be replaced
};

Outcome<Output> openOutput(const OutputOptions& options);

// Refuses a file that could not be replaced.
Outcome<> checkWritable(const std::filesystem::path& file);

// All or nothing.
Outcome<> write(const Output& output, const drawing::Picture& picture);
Outcome<> writeText(const std::filesystem::path& file, std::string_view text);

} // namespace cli
