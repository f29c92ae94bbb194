#pragma once

#include "framework/values/Object.h"

#include <cstddef>
#include <map>
#include <span>
#include <utility>
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
    void Set(int id, std::span<const std::byte> file) {
        changed_[id].assign(file.begin(), file.end());
    }
    void Remove(int id) { changed_[id].clear(); }
    /// Brings back what was compiled into the program, and nothing else.
    void Restore() { changed_.clear(); }

  private:
    /// Files that were put in place, and empty ones for those that were removed.
    std::map<int, std::vector<std::byte>> changed_;
};

/// The PNG files that were compiled into the program, by the ids and the scales of their
/// pictures. The build makes the table from the artwork.
[[nodiscard]] std::map<std::pair<int, int>, std::span<const std::byte>> EmbeddedPictures();

/// The program's own resources, the artwork that was compiled into it.
[[nodiscard]] Ref<ResourceFork> appResourceForkGetter();

} // namespace kqu
