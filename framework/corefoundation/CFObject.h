#pragma once

#include "framework/values/Object.h"

namespace kqu {

/// Which kind of value an object of the notifications and property lists is.
enum class CFTypeID { String, Boolean, Number, Dictionary, Other };

/// A value of a notification or a property list. Immutable once it is made.
class CFObject : public Object {
  public:
    [[nodiscard]] virtual CFTypeID TypeID() const = 0;
};

/// The object as one of type T. Raises IllegalCastException for another type, NilObjectException
/// for nil.
template <class T>
[[nodiscard]] Ref<T> CFCast(const Ref<CFObject>& object) {
    if (Required(object)->TypeID() != T::typeID)
        throw IllegalCastException("a value is of another type than the one wanted");
    return std::static_pointer_cast<T>(object);
}

/// A copy that shares nothing that could change. Values never change, so it is the value itself.
[[nodiscard]] inline Ref<CFObject> CFDeepCopy(const Ref<CFObject>& object) {
    return object;
}

} // namespace kqu
