#pragma once

#include "framework/corefoundation/CFObject.h"

#include <memory>

namespace kqu {

/// A value of a kind that nothing here asks for: a container, a date, a descriptor.
class CFOther : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::Other;
    [[nodiscard]] static Ref<CFOther> Make() { return std::make_shared<CFOther>(); }
    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
};

} // namespace kqu
