#pragma once

#include "framework/corefoundation/CFObject.h"

#include <memory>

namespace kqu {

/// True or false.
class CFBoolean : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::Boolean;
    [[nodiscard]] static Ref<CFBoolean> Make(bool value) {
        return std::make_shared<CFBoolean>(value);
    }
    explicit CFBoolean(bool value) : value_(value) {}

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    [[nodiscard]] bool Value() const { return value_; }

  private:
    bool value_;
};

} // namespace kqu
