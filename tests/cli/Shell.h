// Runs the real program in a folder of its own and looks at everything it leaves behind.
#pragma once

#include "platform/drawing/Picture.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

struct Ran {
    int status = -1; // 128 + n when signal n ended it
    std::string out, err;
};

class Shell {
public:
    // An empty folder with a content library beside it: the glass textures Bubbles and Ripple, the
    // shading materials clay, Marble and Sand, the brush Dot.
    Shell();
    ~Shell();
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    // `input` is what the program reads from standard input.
    Ran run(const std::vector<std::string>& arguments, std::string_view input = {}) const;
    // A line of the system's shell, which finds the program under its name.
    Ran runLine(const std::string& line) const;
    // Starts it with an open standard input that stays empty, interrupts it when it waits there.
    Ran interrupt(const std::vector<std::string>& arguments) const;
    // Adds a variable to the program's environment.
    void setVariable(const std::string& name, const std::string& value);

    std::filesystem::path path(std::string_view name) const { return _folder / name; }
    std::filesystem::path library() const { return _library; }
    std::string read(std::string_view name) const;
    void write(std::string_view name, std::string_view bytes) const;
    bool has(std::string_view name) const;
    // Names of everything in the folder, in order.
    std::vector<std::string> files() const;

    // A picture file of smooth colours, with transparency on request.
    void writePicture(std::string_view name, int width, int height, bool transparent = false) const;
    drawing::PictureRef picture(std::string_view name) const;

private:
    Ran runWords(const std::vector<std::string>& words, std::string_view input) const;

    std::filesystem::path _root, _folder, _library;
    std::vector<std::string> _variables;
};

// The pixels as bytes, with the size in front.
std::string pixelsOf(const drawing::PictureRef& picture);

} // namespace tests
