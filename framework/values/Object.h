#pragma once

#include "framework/values/Exceptions.h"

#include <memory>

namespace kqu {

/// The base of everything that is held by reference.
class Object {
  public:
    Object() = default;
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
};

/// A counted reference; an empty one is nil.
template <class T>
using Ref = std::shared_ptr<T>;

/// The object as one of class T. Nil stays nil; an object of another class raises
/// IllegalCastException.
template <class T>
[[nodiscard]] Ref<T> Cast(const Ref<Object>& object) {
    auto cast = std::dynamic_pointer_cast<T>(object);
    if (object && !cast)
        throw IllegalCastException("an object is of another class than the one wanted");
    return cast;
}

/// The object itself where there must be one. Raises NilObjectException for nil.
template <class T>
[[nodiscard]] const Ref<T>& Required(const Ref<T>& object) {
    if (!object)
        throw NilObjectException("a nil object was used");
    return object;
}

} // namespace kqu
