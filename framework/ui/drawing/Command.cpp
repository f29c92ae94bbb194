#include "framework/ui/drawing/Command.h"

#include "framework/ui/drawing/Blending.h"
#include "framework/ui/drawing/Plane.h"
#include "framework/ui/drawing/Scaling.h"
#include "framework/values/Overloaded.h"
#include "platform/text/TextLayout.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kqu::drawing {

namespace {
using platform::TextImage;
using platform::TextLayout;

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

/// Draws a line of pixels, through a line of a mask if there is one.
void PaintLine(const Pixel* colours, const Pixel* mask, Pixel* below, Pixels width) {
    if (mask != nullptr)
        BlendThroughMask(colours, mask, below, Count(width));
    else
        std::copy_n(colours, width, below);
}

void PaintNatural(const ImageCommand& command, const Target& target) {
    const Target inImage =
        target.Of(command.destination.left - command.source.left,
                  command.destination.top - command.source.top, command.destination);
    const Area& area = inImage.clip;
    const auto& [image, mask] = command.image;
    if (!mask) {
        image->PaintOn(inImage);
        return;
    }
    const auto colours = image->PixelsOf(area);
    const auto shown = mask->PixelsOf(area);
    for (Pixels y = area.top; y < area.bottom; ++y)
        PaintLine(colours->At(area.left, y), shown->At(area.left, y), inImage.At(area.left, y),
                  area.Width());
}

// The panel stretches and squeezes pictures in their width. A line that is wanted at another height
// is shown as it is.
void PaintScaled(const ImageCommand& command, const Target& target) {
    const auto& [image, destination, source] = command;
    const Area visible = target.clip.Within(destination);
    const LineScaling across({source.left, source.Width()},
                             {destination.left, destination.Width()});
    const auto lineOf = [&source = source, &destination = destination](Pixels y) {
        return source.top + (y - destination.top) * source.Height() / destination.Height();
    };
    const Area wanted{visible.left, lineOf(visible.top), visible.right,
                      lineOf(visible.bottom - 1) + 1};
    const Raster colours = across.Apply(*image.colours, wanted);
    const auto mask = image.mask ? std::optional(across.Apply(*image.mask, wanted)) : std::nullopt;
    for (Pixels y = visible.top; y < visible.bottom; ++y)
        PaintLine(colours.At(visible.left, lineOf(y)),
                  mask ? mask->At(visible.left, lineOf(y)) : nullptr, target.At(visible.left, y),
                  visible.Width());
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

/// Where a share of `length` that is `part` of `whole` ends, to the nearest pixel.
Pixels Share(Pixels part, Pixels whole, Pixels length) {
    return (part * length + whole / 2) / whole;
}
} // namespace

bool Image::operator==(const Image& other) const {
    const auto areEqual = [](const auto& one, const auto& another) {
        return one == another || (one && another && *one == *another);
    };
    return areEqual(colours, other.colours) && areEqual(mask, other.mask);
}

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
