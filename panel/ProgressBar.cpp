#include "framework/ui/Graphics.h"
#include "framework/values/Numbers.h"
#include "framework/values/Object.h"
#include "panel/MyEventList.h"
#include "panel/Pictures.h"

// How a bar is composed: a track and a fill, both strips of three slices of one sprite, and ticks.

namespace kqu {

namespace {
// The sprite's columns.
constexpr int sliceWidth = 5;
constexpr int tickWidth = 2;
constexpr int tickColumn = 45;

/// Where in the sprite the slices of a strip begin.
struct StripColumns {
    int leftCap;
    int middle;
    int rightCap;
};
constexpr StripColumns fillColumns{15, 20, 25};
constexpr StripColumns trackColumns{30, 35, 40};

constexpr Colour white = RGB(255, 255, 255);

/// Values of a bar that is not to be seen; below it the track alone is.
constexpr double hiddenBar = -1.0;
constexpr double tenths = 10.0;

Graphics& MaskOf(Picture& picture) {
    return picture.Mask(MaskCreation::MakeIfMissing)->Graphics();
}

void FillWhite(Graphics& graphics, const Picture& picture) {
    graphics.SetForeColor(white);
    graphics.FillRect(0, 0, picture.Width(), picture.Height());
}

/// Two scratch pictures of one slice, for the sprite's colours and for its mask, used again and
/// again.
class Slice {
  public:
    explicit Slice(int height)
        : colours_(NewPicture(sliceWidth, height, pictureDepth)),
          mask_(NewPicture(sliceWidth, height, pictureDepth)) {}

    void Sample(int column) const {
        colours_->Graphics().DrawPicture(*Required(SmallProgress()), -column, 0);
        mask_->Graphics().DrawPicture(*Required(SmallProgressMask()), -column, 0);
    }

    /// Draws the sample on a strip and on its mask, scaled to that width.
    void Draw(Picture& strip, int x, int width) const {
        const int height = colours_->Height();
        strip.Graphics().DrawPicture(*colours_, x, 0, width, height, 0, 0, sliceWidth, height);
        MaskOf(strip).DrawPicture(*mask_, x, 0, width, height, 0, 0, sliceWidth, height);
    }

  private:
    Ref<Picture> colours_;
    Ref<Picture> mask_;
};

Ref<Picture> BuildStrip(int width, int height, const StripColumns& columns, const Slice& slice) {
    Ref<Picture> strip = NewPicture(width, height, pictureDepth);
    slice.Sample(columns.middle);
    slice.Draw(*strip, 0, width);
    slice.Sample(columns.leftCap);
    slice.Draw(*strip, 0, sliceWidth);
    // In a strip that is too narrow for both caps this one lies on top.
    slice.Sample(columns.rightCap);
    slice.Draw(*strip, width - sliceWidth, sliceWidth);
    return strip;
}

Ref<Picture> BuildTick(int height) {
    Ref<Picture> tick = NewPicture(tickWidth, height, pictureDepth);
    tick->Graphics().DrawPicture(*Required(SmallProgress()), -tickColumn, 0);
    MaskOf(*tick).DrawPicture(*Required(SmallProgressMask()), -tickColumn, 0);
    return tick;
}

/// Draws a strip on a bar. Its mask takes the place of the bar's, so that the fill's caps cut their
/// own shape into the track.
void DrawStrip(Picture& bar, Picture& strip, int width, int height) {
    bar.Graphics().DrawPicture(strip, 0, 0, width, height);
    MaskOf(bar).DrawPicture(*strip.Mask(MaskCreation::MakeIfMissing), 0, 0, width, height);
}

/// Ticks lie over track and fill alike, and change the bar's colours only. Their places are running
/// sums, not products: for some widths the sum stays just below the whole, and the tenth tick shows
/// in the last column.
void DrawTicks(Picture& bar, const Picture& tick, std::int32_t width) {
    double walked = 0.0;
    double place = 0.0;
    for (;;) {
        const double step = width / tenths;
        if (step < 0.0 ? walked < width : width < walked)
            break;
        place += width / tenths;
        bar.Graphics().DrawPicture(tick, ToInt32(place), 0);
        walked += step;
    }
}

bool IsOfWidth(const Ref<Picture>& strip, std::int32_t width) {
    return IsOfPresentScale(strip) && strip->Width() == width;
}
} // namespace

void MyEventList::ListProgress(std::int32_t width, double value, double maximum,
                               Dictionary& record) {
    const int height = Required(SmallProgress())->Height();
    const Ref<Picture> bar = NewPicture(width, height, pictureDepth);
    FillWhite(bar->Graphics(), *bar);
    FillWhite(MaskOf(*bar), *bar);
    const Slice slice(height);
    if (!IsOfPresentScale(ProgressSep))
        ProgressSep = BuildTick(height);
    // The two tests differ on purpose: below -1.0 there is a track without fill and ticks.
    if (value != hiddenBar) {
        // One line higher than the bar, which cuts it away.
        if (!IsOfWidth(WhitePict, width))
            WhitePict = BuildStrip(width, height + 1, trackColumns, slice);
        DrawStrip(*bar, *WhitePict, naturalSize, naturalSize);
    }
    if (value > hiddenBar) {
        const double filled = value * width / maximum;
        if (filled != 0.0 && value != 0.0 && maximum != 0.0) {
            if (!IsOfWidth(BluePict, width))
                BluePict = BuildStrip(width, height, fillColumns, slice);
            // The whole strip is squeezed into the filled length: every fill has its round right
            // end.
            DrawStrip(*bar, *BluePict, ToInt32(filled), height);
        }
        DrawTicks(*bar, *ProgressSep, width);
    }
    record.SetValue("progresspict", bar);
}

} // namespace kqu
