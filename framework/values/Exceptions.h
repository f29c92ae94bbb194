#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kqu {

/// What the framework raises. Nothing but the application's own events catches it.
class RuntimeException : public std::exception {
  public:
    explicit RuntimeException(std::string message) : message_(std::move(message)) {}
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

  private:
    std::string message_;
};

/// A nil object was used.
class NilObjectException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// A dictionary was asked for a key that it doesn't have.
class KeyNotFoundException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// An index lies beyond what is there.
class OutOfBoundsException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// An object is of another kind than the one that was wanted.
class IllegalCastException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// No function of that name stands in that library.
class FunctionNotFoundException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

} // namespace kqu
