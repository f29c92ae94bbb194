#include "framework/ui/drawing/Command.h"

#include "framework/ui/drawing/Blending.h"
#include "framework/ui/drawing/Plane.h"
#include "framework/ui/drawing/Scaling.h"
#include "platform/text/TextLayout.h"

#include <algorithm>
#include <utility>

namespace kqu::drawing {

namespace {
using platform::TextImage;
using platform::TextLayout;

/// A scaling makes pixels of so much of its source at once, or of what goes into one line.
constexpr Pixels scaledAtOnce = 1 << 20;

std::size_t Count(Pixels pixels) {
    return static_cast<std::size_t>(pixels);
}

void PaintFill(const FillCommand& fill, const Target& target) {
    const Area visible = fill.area.Within(target.clip);
    if (visible.IsEmpty())
        return;
    for (Pixels y = visible.top; y < visible.bottom; ++y)
        std::fill_n(target.At(visible.left, y), visible.Width(), fill.colour);
}

/// Draws pixels of the target's own coordinates, through a mask if there is one.
void PaintPixels(const Raster& colours, const Raster* mask, const Target& target) {
    const Area& area = target.clip;
    for (Pixels y = area.top; y < area.bottom; ++y) {
        const Pixel* source = colours.At(area.left, y);
        Pixel* below = target.At(area.left, y);
        if (mask != nullptr)
            BlendThroughMask(source, mask->At(area.left, y), below, Count(area.Width()));
        else
            std::copy_n(source, area.Width(), below);
    }
}

void PaintNatural(const ImageCommand& command, const Target& target) {
    const Target inImage =
        target.Of(command.destination.left - command.source.left,
                  command.destination.top - command.source.top, command.destination);
    const auto& [colours, mask] = command.image;
    if (!mask)
        colours->PaintOn(inImage);
    else if (const Area& area = inImage.clip; Plane::IsInReason(area))
        PaintPixels(*colours->PixelsOf(area), mask->PixelsOf(area).get(), inImage);
}

void PaintScaled(const ImageCommand& command, const Target& target) {
    const auto& [image, destination, source] = command;
    const Area visible = target.clip.Within(destination);
    const ScaledAxis across({source.left, source.Width()}, {destination.left, destination.Width()});
    const ScaledAxis down({source.top, source.Height()}, {destination.top, destination.Height()});
    const auto sourceOf = [&](const Area& part) {
        const auto columns = across.SourceOf(part.left, part.right);
        const auto lines = down.SourceOf(part.top, part.bottom);
        return Area::Of(columns.start, lines.start, columns.length, lines.length);
    };
    const Area all = sourceOf(visible);
    const bool atOnce = all.Height() <= scaledAtOnce / std::max<Pixels>(all.Width(), 1);
    const Pixels step = atOnce ? visible.Height() : 1;
    for (Pixels top = visible.top; top < visible.bottom; top += step) {
        const Area part{visible.left, top, visible.right, top + step};
        const Area needed = sourceOf(part);
        if (!Plane::IsInReason(needed)) {
            // Nothing shows through an image without a mask, even where there is none to be had.
            if (!image.mask)
                PaintFill({part, white}, target);
            continue;
        }
        const auto scaled = [&](const Plane& plane) {
            return Scaled(*plane.PixelsOf(needed), across, down, part);
        };
        const Raster colours = scaled(*image.colours);
        const Target here = target.Of(0, 0, part);
        if (image.mask) {
            const Raster mask = scaled(*image.mask);
            PaintPixels(colours, &mask, here);
        } else {
            PaintPixels(colours, nullptr, here);
        }
    }
}

void PaintImage(const ImageCommand& command, const Target& target) {
    if (target.clip.Within(command.destination).IsEmpty())
        return;
    if (command.destination.Width() == command.source.Width() &&
        command.destination.Height() == command.source.Height())
        PaintNatural(command, target);
    else
        PaintScaled(command, target);
}

void PaintText(const TextCommand& command, const Target& target) {
    const auto image = TextLayout::Shared().Image(command.text, command.size, command.colour);
    const Area place = Area::Of(command.x + image->left, command.baseline + image->top,
                                image->width, image->height);
    const Area visible = place.Within(target.clip);
    if (visible.IsEmpty())
        return;
    for (Pixels y = visible.top; y < visible.bottom; ++y) {
        const auto offset = Count((y - place.top) * place.Width() + visible.left - place.left);
        Pixel* below = target.At(visible.left, y);
        if (image->colours.empty())
            BlendCovered(command.colour, image->coverage.data() + offset, below,
                         Count(visible.Width()));
        else
            BlendPremultiplied(image->colours.data() + offset, below, Count(visible.Width()));
    }
}

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

/// Where a share of `length` that is `part` of `whole` ends, to the nearest pixel.
Pixels Share(Pixels part, Pixels whole, Pixels length) {
    return (part * length + whole / 2) / whole;
}
} // namespace

Area Command::Reach() const {
    return std::visit(Overloaded{[](const FillCommand& fill) { return fill.area; },
                                 [](const ImageCommand& image) { return image.destination; },
                                 [](const TextCommand& text) {
                                     const Pixels distance = Pixels{TextLayout::reach} * text.size;
                                     return Area{text.x - distance, text.baseline - distance,
                                                 text.x + TextLayout::longest,
                                                 text.baseline + distance};
                                 }},
                      what);
}

bool Command::IsOpaque() const {
    const auto* image = std::get_if<ImageCommand>(&what);
    return std::holds_alternative<FillCommand>(what) || (image != nullptr && !image->image.mask);
}

void Command::Paint(const Target& target) const {
    std::visit(Overloaded{[&](const FillCommand& fill) { PaintFill(fill, target); },
                          [&](const ImageCommand& image) { PaintImage(image, target); },
                          [&](const TextCommand& text) { PaintText(text, target); }},
               what);
}

Command DrawImage(Image image, const Area& destination, const Area& source) {
    const Area inside = source.Within(image.colours->Bounds());
    if (source.IsEmpty() || destination.IsEmpty() || inside.IsEmpty())
        return {FillCommand{}};
    const auto across = [&](Pixels x) {
        return destination.left + Share(x - source.left, source.Width(), destination.Width());
    };
    const auto down = [&](Pixels y) {
        return destination.top + Share(y - source.top, source.Height(), destination.Height());
    };
    const Area place{across(inside.left), down(inside.top), across(inside.right),
                     down(inside.bottom)};
    return {ImageCommand{std::move(image), place, inside}};
}

} // namespace kqu::drawing
