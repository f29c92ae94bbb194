#pragma once

#include "framework/corefoundation/CFObject.h"
#include "framework/files/FolderItem.h"

#include <memory>

namespace kqu {

/// The address of a file item.
class CFURL : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::Url;
    [[nodiscard]] static Ref<CFURL> FromFolderItem(const Ref<FolderItem>& item) {
        return item ? std::make_shared<CFURL>(item) : nullptr;
    }
    explicit CFURL(Ref<FolderItem> item) : item_(std::move(item)) {}

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    [[nodiscard]] const Ref<FolderItem>& Item() const { return item_; }

  private:
    Ref<FolderItem> item_;
};

} // namespace kqu
