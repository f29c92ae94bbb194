#pragma once

#include "framework/corefoundation/CFObject.h"

#include <memory>
#include <string>
#include <utility>

namespace kqu {

/// A text, by intention UTF-8.
class CFString : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::String;
    [[nodiscard]] static Ref<CFString> Make(std::string value) {
        return std::make_shared<CFString>(std::move(value));
    }
    explicit CFString(std::string value) : value_(std::move(value)) {}

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    [[nodiscard]] const std::string& Text() const { return value_; }

  private:
    std::string value_;
};

} // namespace kqu
