#pragma once

#include "framework/corefoundation/CFObject.h"

#include <memory>

namespace kqu {

/// A number of any kind.
class CFNumber : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::Number;
    [[nodiscard]] static Ref<CFNumber> Make(double value) {
        return std::make_shared<CFNumber>(value);
    }
    explicit CFNumber(double value) : value_(value) {}

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    [[nodiscard]] double DoubleValue() const { return value_; }

  private:
    double value_;
};

} // namespace kqu
