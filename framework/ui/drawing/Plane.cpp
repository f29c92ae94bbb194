#include "framework/ui/drawing/Plane.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kqu::drawing {

namespace {
/// A plane of up to so many pixels keeps them once they have been made.
constexpr Pixels smallPlane = 1 << 16;
/// What is looked at less often is not worth keeping: a bar is drawn anew at each paint, and shown
/// once, or in two parts.
constexpr int fewLooks = 2;
/// What was drawn over is looked for among so many commands, the latest.
constexpr std::ptrdiff_t fewEntries = 32;
} // namespace

Plane::Plane(int width, int height) : width_(width), height_(height), blank_(Bounds()) {}

Plane::Plane(Raster pixels)
    : width_(static_cast<int>(pixels.Bounds().Width())),
      height_(static_cast<int>(pixels.Bounds().Height())),
      pixels_(std::make_shared<Raster>(std::move(pixels))) {}

Plane::Plane(const Plane& other)
    : width_(other.width_),
      height_(other.height_),
      pixels_(other.pixels_ ? std::make_shared<Raster>(*other.pixels_) : nullptr),
      entries_(other.entries_),
      blank_(other.blank_),
      latestFill_(other.latestFill_) {}

bool Plane::operator==(const Plane& other) const {
    return Bounds() == other.Bounds() && pixels_ == other.pixels_ && blank_ == other.blank_ &&
           entries_ == other.entries_;
}

bool Plane::IsHiddenBy(const Command& command, const Area& clip) const {
    return command.IsOpaque() && command.Reach().Within(clip).Covers(Bounds());
}

void Plane::Draw(Command command, const Area& clip) {
    const Area reach = command.Reach().Within(clip).Within(Bounds());
    if (reach.IsEmpty())
        return;
    if (pixels_)
        command.Paint({*pixels_, reach});
    else
        Record(std::move(command), reach);
}

void Plane::Record(Command command, const Area& reach) {
    if (command.IsOpaque() && reach.Covers(Bounds())) {
        entries_.clear();
        latestFill_.reset();
        blank_ = {};
    } else if (command.IsOpaque()) {
        DropBelow(reach);
    }
    if (std::holds_alternative<FillCommand>(command.what)) {
        Hide(reach);
        latestFill_ = entries_.size();
    }
    entries_.push_back({std::move(command), reach});
}

// Lists are painted in overlapping stripes, each reaching far below its row. Of a fill that the
// next one covers down to its end, only the part above is kept, so that every pixel is filled once.
void Plane::Hide(const Area& filled) {
    if (latestFill_) {
        Area& before = entries_[*latestFill_].reach;
        if (filled.left <= before.left && filled.right >= before.right &&
            filled.bottom >= before.bottom)
            before.bottom = std::clamp(filled.top, before.top, before.bottom);
    }
    if (filled.left <= blank_.left && filled.right >= blank_.right && filled.top <= blank_.top)
        blank_.top = std::clamp(filled.bottom, blank_.top, blank_.bottom);
}

// A window is drawn on again and again, control by control, and shows only what came last. A list
// is drawn once, row by row: its many entries are not searched each time.
void Plane::DropBelow(const Area& covered) {
    const auto searched = entries_.end() - std::min(fewEntries, std::ssize(entries_));
    const auto kept = std::remove_if(
        searched, entries_.end(), [&](const Entry& entry) { return covered.Covers(entry.reach); });
    if (kept == entries_.end())
        return;
    if (latestFill_ && std::cmp_greater_equal(*latestFill_, searched - entries_.begin()))
        latestFill_.reset();
    entries_.erase(kept, entries_.end());
}

void Plane::Rasterise() const {
    auto pixels = std::make_shared<Raster>(Bounds());
    PaintOn({*pixels, Bounds()});
    pixels_ = std::move(pixels);
    entries_ = {};
}

void Plane::PaintOn(const Target& target) const {
    if (pixels_) {
        const Area& area = target.clip;
        for (Pixels y = area.top; y < area.bottom; ++y)
            std::copy_n(pixels_->At(area.left, y), area.Width(), target.At(area.left, y));
        return;
    }
    Command{FillCommand{blank_, white}}.Paint(target);
    for (const Entry& entry : entries_) {
        const Area visible = entry.reach.Within(target.clip);
        if (!visible.IsEmpty())
            entry.command.Paint(target.Of(0, 0, visible));
    }
}

Pixel Plane::At(Pixels x, Pixels y) const {
    if (pixels_)
        return *pixels_->At(x, y);
    const Area place = Area::Of(x, y, 1, 1);
    Raster pixel(place);
    PaintOn({pixel, place});
    return *pixel.At(x, y);
}

std::shared_ptr<const Raster> Plane::PixelsOf(const Area& area) const {
    if (!pixels_ && Size() <= smallPlane && ++looks_ > fewLooks)
        Rasterise();
    if (pixels_)
        return pixels_;
    auto pixels = std::make_shared<Raster>(area);
    PaintOn({*pixels, area});
    return pixels;
}

} // namespace kqu::drawing
