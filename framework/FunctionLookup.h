#pragma once

#include "framework/Runtime.h"
#include "framework/values/Exceptions.h"
#include "platform/functions/Functions.h"

#include <string>
#include <utility>

namespace kqu {

/// A function that was found by name and library, ready to be called.
template <class F>
class FoundFunction {
  public:
    explicit FoundFunction(platform::FunctionTable::Entry<F> entry) : entry_(std::move(entry)) {}

    template <class... Arguments>
    decltype(auto) operator()(Arguments&&... arguments) const {
        return (*entry_)(std::forward<Arguments>(arguments)...);
    }

  private:
    platform::FunctionTable::Entry<F> entry_;
};

/// Looks a function up by its name and library, afresh at each use.
/// Raises FunctionNotFoundException, which names both.
template <class F>
[[nodiscard]] FoundFunction<F> Lookup() {
    auto entry = Runtime::Current().Functions().Find<F>();
    if (!entry)
        throw FunctionNotFoundException(std::string(F::name), std::string(F::library));
    return FoundFunction<F>(std::move(entry));
}

/// Whether a look-up of the function would succeed.
template <class F>
[[nodiscard]] bool IsFunctionAvailable() {
    return Runtime::Current().Functions().Find<F>() != nullptr;
}

} // namespace kqu
