// A value, or one line that says why there is none.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace foundation {

struct Error {
    std::string text; // one line, no full stop, fit to be printed after "cif: "
};

template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : _value(std::move(value)) {}
    Result(Error error) : _error(std::move(error.text)) {}

    explicit operator bool() const { return _value.has_value(); }
    const T& operator*() const& { return *_value; }
    T&& operator*() && { return std::move(*_value); }
    T* operator->() { return &*_value; }
    const T* operator->() const { return &*_value; }
    const std::string& error() const { return _error; }

private:
    std::optional<T> _value;
    std::string _error;
};

// A result with nothing in it: done, or why not.
struct Done {};
using Status = Result<Done>;

} // namespace foundation
