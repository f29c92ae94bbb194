#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kqu {

/// What the framework fails by. Whatever is not handled reaches the application object.
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

/// A dictionary has no such key.
class KeyNotFoundException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// An index or an offset lies outside.
class OutOfBoundsException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// An object is not of the class that it was taken for.
class IllegalCastException : public RuntimeException {
    using RuntimeException::RuntimeException;
};

/// A function that is reached by name is not there.
class FunctionNotFoundException : public RuntimeException {
  public:
    FunctionNotFoundException(std::string function, std::string library)
        : RuntimeException("the function \"" + function + "\" was not found in \"" + library +
                           "\""),
          function_(std::move(function)),
          library_(std::move(library)) {}

    [[nodiscard]] const std::string& Function() const { return function_; }
    [[nodiscard]] const std::string& Library() const { return library_; }

  private:
    std::string function_;
    std::string library_;
};

} // namespace kqu
