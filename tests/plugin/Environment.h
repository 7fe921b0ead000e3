// What the tests of the plug-in object share: folders that vanish, variables that come back, a log
// that can be read.
#pragma once

#include "platform/foundation/Log.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "cif-test-XXXXXX").string();
        _path = mkdtemp(pattern.data());
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(_path, error);
    }
    const std::filesystem::path& path() const { return _path; }
    // Makes the file, and the folders on the way to it.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view bytes) const
    {
        std::filesystem::create_directories((_path / name).parent_path());
        std::ofstream(_path / name, std::ios::binary) << bytes;
        return _path / name;
    }

private:
    std::filesystem::path _path;
};

// Sets an environment variable for the life of the object; nothing unsets it.
class Variable {
public:
    Variable(const char* name, std::optional<std::string> value) : _name(name)
    {
        if (const char* old = std::getenv(name))
            _old = old;
        assign(value);
    }
    ~Variable() { assign(_old); }
    Variable(const Variable&) = delete;

private:
    void assign(const std::optional<std::string>& value)
    {
        if (value)
            setenv(_name, value->c_str(), 1);
        else
            unsetenv(_name);
    }
    const char* _name;
    std::optional<std::string> _old;
};

// Collects the lines of the log for the life of the object.
class LogLines {
public:
    LogLines()
    {
        _former =
            foundation::setLogSink([this](std::string_view line) { lines.emplace_back(line); });
    }
    ~LogLines() { foundation::setLogSink(std::move(_former)); }
    LogLines(const LogLines&) = delete;

    std::vector<std::string> lines;

private:
    foundation::LogSink _former;
};
