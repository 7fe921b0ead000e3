#include "platform/drawing/Process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace drawing {

using foundation::Error;
using foundation::Result;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

class FileDescriptor {
public:
    explicit FileDescriptor(int number = -1) : _number(number) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { reset(); }

    int get() const { return _number; }
    void reset(int number = -1)
    {
        if (_number >= 0)
            close(_number);
        _number = number;
    }

private:
    int _number;
};

bool writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(written > 0 ? written : 0);
    }
    return lseek(file, 0, SEEK_SET) == 0;
}

// An empty folder for one program's scratch files, gone afterwards. Interpreters of page
// descriptions let a document read and write in the temporary folder, so that must not be
// everybody's.
class ScratchFolder {
public:
    ScratchFolder()
    {
        std::error_code failed;
        std::string name = (fs::temp_directory_path(failed) / "cif-XXXXXX").string();
        if (!failed && mkdtemp(name.data()))
            _path = name;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder()
    {
        std::error_code ignored;
        if (!_path.empty())
            fs::remove_all(_path, ignored);
    }

    const std::string& path() const { return _path; } // empty when it could not be made

private:
    std::string _path;
};

// The environment with the scratch folder, with numbers written the same way everywhere and without
// options of the user's own.
std::vector<std::string> environmentForPrograms(const std::string& scratch)
{
    constexpr std::string_view kReplaced[] = {
        "LC_ALL=", "TMPDIR=", "TEMP=", "TMP=", "GS_OPTIONS=", "GS_DEVICE="};
    std::vector<std::string> out{"LC_ALL=C", "TMPDIR=" + scratch, "TEMP=" + scratch,
                                 "TMP=" + scratch};
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        if (std::ranges::none_of(kReplaced, [&](auto name) { return text.starts_with(name); }))
            out.emplace_back(text);
    }
    return out;
}

std::vector<char*> pointers(std::vector<std::string>& strings)
{
    std::vector<char*> out;
    for (std::string& s : strings)
        out.push_back(s.data());
    out.push_back(nullptr);
    return out;
}

// A started program; killed, if it still runs, and always waited for.
class Child {
public:
    explicit Child(pid_t id) : _id(id) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child()
    {
        if (_id > 0) {
            kill(_id, SIGKILL);
            while (waitpid(_id, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
    }

    // Its wait status once it has ended.
    std::optional<int> waitUntil(Clock::time_point end)
    {
        for (;;) {
            int status = 0;
            const pid_t answer = waitpid(_id, &status, WNOHANG);
            if (answer == _id || (answer < 0 && errno != EINTR)) {
                _id = -1;
                return answer < 0 ? -1 : status; // -1: someone else has waited for it
            }
            if (Clock::now() >= end)
                return {};
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

private:
    pid_t _id;
};

pid_t spawn(const fs::path& program, const std::vector<std::string>& arguments,
            const std::string& scratch, int input, int output)
{
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentForPrograms(scratch);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);

    // Signals the host blocks or ignores are the host's affair.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t id = -1;
    const int failed = posix_spawn(&id, program.c_str(), &files, &attributes,
                                   pointers(words).data(), pointers(variables).data());
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return failed ? -1 : id;
}

} // namespace

std::optional<fs::path> findProgram(std::string_view name)
{
    const char* variable = std::getenv("PATH");
    std::string_view rest = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        // A relative folder would run whatever lies beside the picture.
        if (!folder.starts_with('/'))
            continue;
        fs::path candidate = fs::path(folder) / name;
        std::error_code ignored;
        if (access(candidate.c_str(), X_OK) == 0 && fs::is_regular_file(candidate, ignored))
            return candidate;
    }
    return {};
}

Result<std::string> runProgram(const fs::path& program, const std::vector<std::string>& arguments,
                               std::string_view input, const ProcessLimits& limits)
{
    const std::string name = program.filename().string();
    const FileDescriptor inputFile(memfd_create("picture", MFD_CLOEXEC));
    int ends[2];
    if (inputFile.get() < 0 || !writeAll(inputFile.get(), input) || pipe2(ends, O_CLOEXEC) != 0)
        return Error{name + " cannot be started: " + std::strerror(errno)};
    const FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);

    const ScratchFolder scratch;
    if (scratch.path().empty())
        return Error{name + " cannot be started: no temporary folder"};

    const Clock::time_point end = Clock::now() + limits.time;
    const pid_t id = spawn(program, arguments, scratch.path(), inputFile.get(), writeEnd.get());
    if (id < 0)
        return Error{name + " cannot be started"};
    Child child(id);
    writeEnd.reset();
    // Should this process be killed meanwhile, the program still does not run for ever.
    const rlim_t seconds = limits.time / std::chrono::seconds(1) + 5;
    const rlimit processorTime{seconds, seconds};
    prlimit(id, RLIMIT_CPU, &processorTime, nullptr);

    const auto tooLong = [&] {
        return Error{name + " took longer than " +
                     std::to_string(limits.time / std::chrono::seconds(1)) + " seconds"};
    };
    std::string output;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd waitFor{readEnd.get(), POLLIN, 0};
        const int ready = left.count() > 0 ? poll(&waitFor, 1, static_cast<int>(left.count())) : 0;
        if (ready == 0)
            return tooLong();
        if (ready < 0) {
            if (errno == EINTR)
                continue;
            return Error{name + " cannot be waited for: " + std::strerror(errno)};
        }
        char buffer[65536];
        const ssize_t count = read(readEnd.get(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        output.append(buffer, count);
        if (output.size() > limits.outputBytes)
            return Error{name + " wrote more than expected"};
    }
    const std::optional<int> status = child.waitUntil(end);
    if (!status)
        return tooLong();
    if (*status == -1 || !WIFEXITED(*status) || WEXITSTATUS(*status) != 0)
        return Error{name + " failed"};
    return output;
}

} // namespace drawing
