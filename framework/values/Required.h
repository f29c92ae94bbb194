#pragma once

#include "framework/values/Exceptions.h"
#include "framework/values/Object.h"

namespace kqu {

/// The object itself where there must be one. Raises NilObjectException for nil.
template <class T>
[[nodiscard]] const Ref<T>& Required(const Ref<T>& object) {
    if (!object)
        throw NilObjectException("a nil object was used");
    return object;
}

} // namespace kqu
