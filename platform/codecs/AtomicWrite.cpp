// A file appears under its name complete or not at all.
#include "platform/codecs/Codecs.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace codecs {

namespace fs = std::filesystem;
using foundation::Done;
using foundation::Error;

namespace {

// Closes what is still open and removes what was not renamed.
class TemporaryFile {
public:
    TemporaryFile() = default;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        const int reason = errno;
        close();
        if (!_path.empty())
            ::unlink(_path.c_str());
        errno = reason;
    }

    // In the folder of the target, so that the rename stays within one file system.
    bool createIn(const fs::path& folder)
    {
        constexpr int kTries = 100;
        for (int i = 0; i < kTries; ++i) {
            const std::string name =
                ".cif-" + std::to_string(::getpid()) + "-" + std::to_string(i) + ".tmp";
            const fs::path path = folder / name;
            _descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (_descriptor >= 0) {
                _path = path;
                return true;
            }
            if (errno != EEXIST)
                return false;
        }
        return false;
    }
    bool openExisting(const fs::path& path)
    {
        _descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        return _descriptor >= 0;
    }

    bool write(std::string_view bytes)
    {
        while (!bytes.empty()) {
            const ssize_t written = ::write(_descriptor, bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0)
                return false;
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }
    bool setMode(mode_t mode) { return ::fchmod(_descriptor, mode) == 0; }
    bool close()
    {
        const int descriptor = std::exchange(_descriptor, -1);
        return descriptor < 0 || ::close(descriptor) == 0;
    }
    bool renameTo(const fs::path& target)
    {
        if (::rename(_path.c_str(), target.c_str()) != 0)
            return false;
        _path.clear();
        return true;
    }

private:
    int _descriptor = -1;
    fs::path _path;
};

Error cannotWrite(const fs::path& target)
{
    return {"cannot write " + target.string() + ": " + std::strerror(errno)};
}

// The file that a chain of symbolic links leads to, whether it exists or not.
std::optional<fs::path> followLinks(fs::path path)
{
    constexpr int kLongestChain = 40;
    for (int i = 0; i < kLongestChain; ++i) {
        std::error_code ignored;
        if (!fs::is_symlink(path, ignored))
            return path;
        const fs::path next = fs::read_symlink(path, ignored);
        path = path.parent_path() / next;
    }
    errno = ELOOP;
    return std::nullopt;
}

} // namespace

Status writeFileAtomically(const fs::path& target, std::string_view bytes)
{
    struct stat existing {};
    const bool exists = ::stat(target.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT)
        return cannotWrite(target);
    if (exists && S_ISDIR(existing.st_mode)) {
        errno = EISDIR;
        return cannotWrite(target);
    }
    TemporaryFile temporary;
    if (exists && !S_ISREG(existing.st_mode)) {
        // Renaming would put a file in the place of a device or pipe.
        if (!temporary.openExisting(target) || !temporary.write(bytes) || !temporary.close())
            return cannotWrite(target);
        return Done{};
    }
    const std::optional<fs::path> file = followLinks(target);
    if (!file)
        return cannotWrite(target);
    // Renaming would also replace what is protected against writing.
    if (exists && ::access(file->c_str(), W_OK) != 0)
        return cannotWrite(target);
    const fs::path folder = file->has_parent_path() ? file->parent_path() : fs::path(".");
    constexpr mode_t kPermissions = 07777;
    if (!temporary.createIn(folder) || !temporary.write(bytes) ||
        (exists && !temporary.setMode(existing.st_mode & kPermissions)) || !temporary.close() ||
        !temporary.renameTo(*file))
        return cannotWrite(target);
    return Done{};
}

} // namespace codecs
