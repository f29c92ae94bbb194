#pragma once

#include "framework/Runtime.h"
#include "framework/values/Exceptions.h"
#include "platform/functions/Functions.h"

#include <string>
#include <utility>

namespace kqu {

/// Looks a function up by its name and library, afresh at each use. The result is called like the
/// function. Raises FunctionNotFoundException, which names both.
template <class F>
[[nodiscard]] auto Lookup() {
    auto entry = Runtime::Current().Machine().functions.Find<F>();
    if (!entry)
        throw FunctionNotFoundException("function " + std::string(F::name) + " was not found in " +
                                        std::string(F::library));
    return [entry](auto&&... arguments) -> decltype(auto) {
        return (*entry)(std::forward<decltype(arguments)>(arguments)...);
    };
}

/// Whether a look-up of the function would succeed.
template <class F>
[[nodiscard]] bool IsFunctionAvailable() {
    return Runtime::Current().Machine().functions.Find<F>() != nullptr;
}

} // namespace kqu
