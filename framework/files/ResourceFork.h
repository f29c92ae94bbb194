#pragma once

#include "framework/values/Object.h"

#include <cstddef>
#include <map>
#include <span>
#include <vector>

namespace kqu {

class Picture;

/// The pictures that come with the program, by their ids.
class ResourceFork : public Object {
  public:
    /// A new picture, decoded afresh at every call; nil if there is none of that id or if its file
    /// is broken.
    [[nodiscard]] Ref<Picture> GetPicture(int id) const;

    /// Puts a PNG file in place under an id.
    void Set(int id, std::span<const std::byte> file);
    void Remove(int id);
    /// Brings everything back that was compiled into the program, and nothing else.
    void Restore();

  private:
    std::map<int, std::vector<std::byte>> replaced_;
};

/// The program's own resources, the artwork that was compiled into it.
[[nodiscard]] Ref<ResourceFork> appResourceForkGetter();

} // namespace kqu
