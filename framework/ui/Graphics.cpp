#include "framework/ui/Graphics.h"

#include "framework/ui/Picture.h"
#include "framework/ui/drawing/Plane.h"
#include "platform/text/TextLayout.h"

#include <algorithm>
#include <utility>

namespace kqu {

using drawing::Area;
using platform::TextLayout;

namespace {
int OrNatural(int size, int natural) {
    return size == naturalSize ? natural : size;
}
} // namespace

Graphics::Graphics(Picture& picture)
    : picture_(picture), area_{0, 0, picture.Width(), picture.Height()} {}

Graphics::Graphics(const Ref<Picture>& picture, const platform::Rect& area)
    : keptAlive_(picture), picture_(*picture), area_(area) {}

Area Graphics::Clip() const {
    return Area::Of(area_.x, area_.y, area_.width, area_.height)
        .Times(picture_.Scale())
        .Within(picture_.Colours().Bounds());
}

Area Graphics::OnDevice(const Area& area) const {
    return area.Moved(area_.x, area_.y).Times(picture_.Scale());
}

void Graphics::Draw(drawing::Command command) {
    picture_.Draw(std::move(command), Clip());
}

void Graphics::FillRect(int x, int y, int width, int height) {
    Draw({drawing::FillCommand{OnDevice(Area::Of(x, y, width, height)), foreColor_.value}});
}

void Graphics::DrawPicture(const Picture& image, int x, int y, int destinationWidth,
                           int destinationHeight, int sourceX, int sourceY, int sourceWidth,
                           int sourceHeight) {
    const Area destination = Area::Of(x, y, OrNatural(destinationWidth, image.Width()),
                                      OrNatural(destinationHeight, image.Height()));
    const Area source = Area::Of(sourceX, sourceY, OrNatural(sourceWidth, image.Width()),
                                 OrNatural(sourceHeight, image.Height()));
    Draw(drawing::DrawImage(image.Snapshot(), OnDevice(destination), source.Times(image.Scale())));
}

void Graphics::DrawString(std::string_view text, int x, int baseline, int /*wrapWidth*/,
                          bool /*condense*/) {
    const Area start = OnDevice(Area::Of(x, baseline, 0, 0));
    const drawing::Pixels room =
        std::clamp<drawing::Pixels>(Clip().right - start.left, 0, TextLayout::longest);
    if (room == 0)
        return;
    const std::string_view visible = TextLayout::Enough(text, static_cast<int>(room));
    Draw({drawing::TextCommand{std::string(visible), start.left, start.top,
                               textSize_ * picture_.Scale(), foreColor_.value}});
}

double Graphics::StringWidth(std::string_view text) const {
    return TextLayout::Shared().Width(text, textSize_);
}

Colour Graphics::Pixel(int x, int y) const {
    const Area place = OnDevice(Area::Of(x, y, 1, 1));
    if (!Clip().Covers(place))
        return {drawing::white};
    return {picture_.Colours().At(place.left, place.top)};
}

void Graphics::SetPixel(int x, int y, Colour colour) {
    Draw({drawing::FillCommand{OnDevice(Area::Of(x, y, 1, 1)), colour.value}});
}

} // namespace kqu
