#pragma once

#include "framework/values/Object.h"

#include <cstddef>
#include <map>
#include <span>
#include <vector>

namespace kqu {

class Picture;

/// Pictures that come as PNG files, by their ids.
class ResourceFork : public Object {
  public:
    /// A new picture, decoded afresh at every call; nil if there is none of that id or if its file
    /// is broken.
    [[nodiscard]] Ref<Picture> GetPicture(int id) const;

    /// Device pixels to a logical one in the pictures that are to be had now.
    [[nodiscard]] static int Scale();

    /// Puts a file in place under an id.
    void Set(int id, std::span<const std::byte> file);
    void Remove(int id);
    /// Brings back what was compiled into the program, and nothing else.
    void Restore();

  private:
    /// Files that were put in place, and empty ones for those that were removed.
    std::map<int, std::vector<std::byte>> changed_;
};

/// The program's own resources, the artwork that was compiled into it.
[[nodiscard]] Ref<ResourceFork> appResourceForkGetter();

} // namespace kqu
