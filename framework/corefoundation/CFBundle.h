#pragma once

#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFURL.h"

namespace kqu {

/// A folder that describes a program in its Info.plist.
class CFBundle : public CFObject {
  public:
    static constexpr CFTypeID typeID = CFTypeID::Bundle;
    /// The bundle in that folder; nil if there is no such folder.
    [[nodiscard]] static Ref<CFBundle> FromURL(const Ref<CFURL>& url);
    explicit CFBundle(Ref<FolderItem> folder) : folder_(std::move(folder)) {}

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    /// The description, nil if there is none that can be read.
    [[nodiscard]] Ref<CFDictionary> InfoDictionary() const;

  private:
    Ref<FolderItem> folder_;
};

} // namespace kqu
