// Child processes, and the pictures they work on.
#include "Shell.h"

#include "platform/codecs/Codecs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

void store(const fs::path& file, std::string_view bytes)
{
    std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes));
}

drawing::PictureRef smoothPicture(int width, int height, bool transparent)
{
    const auto bitmap = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    for (int y = 0; y < height; ++y) {
        auto* p = bitmap->rowAs<std::uint8_t>(y);
        for (int x = 0; x < width; ++x) {
            *p++ = static_cast<std::uint8_t>(255 * x / width);
            *p++ = static_cast<std::uint8_t>(255 * y / height);
            *p++ = static_cast<std::uint8_t>(127.5 + 127.5 * std::sin(0.4 * (x + 2 * y)));
            *p++ = transparent ? static_cast<std::uint8_t>(255 - 200 * x / width) : 255;
        }
    }
    return drawing::Picture::fromBitmap(bitmap);
}

void writeSmoothPicture(const fs::path& file, int width, int height, bool transparent = false)
{
    const auto format = codecs::formatNamed(file.extension().string().substr(1));
    ASSERT_TRUE(format);
    const auto done =
        codecs::writePicture(*smoothPicture(width, height, transparent), file, *format, {});
    ASSERT_TRUE(done) << done.error();
}

int statusOf(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

Shell::Shell()
{
    const fs::path output = CIF_TEST_OUTPUT;
    fs::create_directories(output);
    std::string pattern = (output / "cli-XXXXXX").string();
    _root = mkdtemp(pattern.data());
    _folder = _root / "work";
    _library = _root / "library";
    fs::create_directories(_folder);
    for (const char* name : {"Textures/Glass Textures", "Textures/Shading Materials", "Brushes"})
        fs::create_directories(_library / name);
    for (const char* name :
         {"Glass Textures/Ripple", "Glass Textures/Bubbles", "Shading Materials/Marble",
          "Shading Materials/Sand", "Shading Materials/clay"})
        writeSmoothPicture(_library / "Textures" / (std::string(name) + ".tif"), 32, 32);
    writeSmoothPicture(_library / "Brushes" / "Dot.tif", 16, 16, true);

    setVariable("CIF_CONTENT_LIBRARY", _library.string());
    setVariable("LC_ALL", "C.UTF-8");
    setVariable("LANGUAGE", "");
}

Shell::~Shell()
{
    std::error_code error;
    fs::permissions(_folder, fs::perms::owner_all, error);
    fs::remove_all(_root, error);
}

void Shell::setVariable(const std::string& name, const std::string& value)
{
    _variables.push_back(name + '=' + value);
}

namespace {

// The child's side: standard streams to files, then the program, "cif" being the one under test.
[[noreturn]] void become(const std::vector<std::string>& words,
                         const std::vector<std::string>& variables, const fs::path& folder,
                         int input, const fs::path& out, const fs::path& err)
{
    const int o = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int e = open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(input, 0);
    dup2(o, 1);
    dup2(e, 2);
    for (const std::string& v : variables)
        setenv(v.substr(0, v.find('=')).c_str(), v.substr(v.find('=') + 1).c_str(), 1);
    const std::string path = fs::path(CIF_PROGRAM).parent_path().string() + ':' + getenv("PATH");
    setenv("PATH", path.c_str(), 1);
    std::vector<char*> argv;
    for (const std::string& word : words)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    if (chdir(folder.c_str()) == 0)
        execvp(words.front() == "cif" ? CIF_PROGRAM : argv.front(), argv.data());
    _exit(127);
}

std::vector<std::string> withProgram(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "cif");
    return arguments;
}

} // namespace

Ran Shell::run(const std::vector<std::string>& arguments, std::string_view input) const
{
    return runWords(withProgram(arguments), input);
}

Ran Shell::runLine(const std::string& line) const
{
    return runWords({"/bin/sh", "-c", line}, {});
}

Ran Shell::runWords(const std::vector<std::string>& words, std::string_view input) const
{
    store(_root / "stdin", input);
    const pid_t child = fork();
    if (child == 0)
        become(words, _variables, _folder, open((_root / "stdin").c_str(), O_RDONLY),
               _root / "stdout", _root / "stderr");
    const int status = statusOf(child);
    return {status, contentOf(_root / "stdout"), contentOf(_root / "stderr")};
}

Ran Shell::interrupt(const std::vector<std::string>& arguments) const
{
    int ends[2];
    if (pipe(ends) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0) {
        close(ends[1]);
        become(withProgram(arguments), _variables, _folder, ends[0], _root / "stdout",
               _root / "stderr");
    }
    // One byte is read as soon as the program listens; then it waits for more.
    [[maybe_unused]] const auto written = ::write(ends[1], "x", 1);
    for (int waited = 0, left = 1; left > 0 && waited < 5000; ++waited) {
        usleep(2000);
        pollfd unread{ends[0], POLLIN, 0};
        left = poll(&unread, 1, 0);
    }
    kill(child, SIGINT);
    const int status = statusOf(child);
    close(ends[0]);
    close(ends[1]);
    return {status, contentOf(_root / "stdout"), contentOf(_root / "stderr")};
}

std::string Shell::read(std::string_view name) const
{
    return contentOf(path(name));
}

void Shell::write(std::string_view name, std::string_view bytes) const
{
    store(path(name), bytes);
}

bool Shell::has(std::string_view name) const
{
    return fs::exists(path(name));
}

std::vector<std::string> Shell::files() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(_folder))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

void Shell::writePicture(std::string_view name, int width, int height, bool transparent) const
{
    writeSmoothPicture(path(name), width, height, transparent);
}

drawing::PictureRef Shell::picture(std::string_view name) const
{
    foundation::Result<drawing::PictureRef> picture = codecs::readPicture(path(name));
    EXPECT_TRUE(picture) << picture.error();
    return picture ? *picture : nullptr;
}

std::string pixelsOf(const drawing::PictureRef& picture)
{
    const imaging::BitmapRef bitmap = picture ? picture->bitmap() : nullptr;
    if (!bitmap)
        return "no pixels";
    std::string bytes = std::to_string(bitmap->width()) + 'x' + std::to_string(bitmap->height());
    const auto rowBytes = static_cast<std::size_t>(bitmap->width()) *
                          static_cast<std::size_t>(bytesPerPixel(bitmap->format()));
    for (int y = 0; y < bitmap->height(); ++y)
        bytes.append(bitmap->rowAs<char>(y), rowBytes);
    return bytes;
}

} // namespace tests
