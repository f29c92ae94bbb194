#pragma once

#include "framework/corefoundation/CFObject.h"

#include <memory>
#include <string>
#include <utility>

namespace kqu {

/// Raw bytes.
class CFData : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::Data;
    [[nodiscard]] static Ref<CFData> Make(std::string value) {
        return std::make_shared<CFData>(std::move(value));
    }
    explicit CFData(std::string value) : value_(std::move(value)) {}

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    [[nodiscard]] const std::string& Bytes() const { return value_; }

  private:
    std::string value_;
};

} // namespace kqu
