#pragma once

#include "framework/ui/Colour.h"
#include "framework/ui/Picture.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace kqu::simulation {

using PixelOf = std::function<Colour(int x, int y)>;

/// A PNG file with these pixels.
[[nodiscard]] std::vector<std::byte> Png(int width, int height, const PixelOf& pixel);

[[nodiscard]] inline Colour Grey(int value) {
    return RGB(value, value, value);
}

/// Artwork for one test in place of the program's own, which is back afterwards. Pictures are
/// loaded anew on both sides.
class Artwork {
  public:
    Artwork();
    ~Artwork();
    Artwork(const Artwork&) = delete;
    Artwork& operator=(const Artwork&) = delete;

    void Set(int id, int width, int height, const PixelOf& pixel);
    void Remove(int id);
};

} // namespace kqu::simulation
