#pragma once

#include "framework/values/Exceptions.h"

#include <memory>

namespace kqu {

/// The root of everything that is held by reference. Objects are shared, never copied.
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

/// The object as one of class T; nil stays nil.
/// Raises IllegalCastException for an object of another class.
template <class T>
[[nodiscard]] Ref<T> Cast(const Ref<Object>& object) {
    Ref<T> cast = std::dynamic_pointer_cast<T>(object);
    if (object && !cast)
        throw IllegalCastException("an object is of another class than it was taken for");
    return cast;
}

} // namespace kqu
