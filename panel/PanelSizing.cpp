#include "framework/FunctionLookup.h"
#include "framework/values/Numbers.h"
#include "panel/Window1.h"

#include <algorithm>

namespace kqu {

namespace {
/// Width that the scroll bar takes from the list, its margin included.
constexpr std::int32_t scrollBarRoom = 11;
/// Distance of the grip from the panel's edges.
constexpr std::int32_t gripMargin = 1;
/// How far the parked scroll bar stands beyond the panel's edge.
constexpr std::int32_t parkingDistance = 1;
/// Makes up for the list's corner at (-1, -1).
constexpr std::int32_t listOverhang = 2;
} // namespace

void Window1::ChangeWindowSize(std::int32_t newWidth, std::int32_t newHeight, bool exactHeight,
                               bool forceLayout) {
    // Without a row the panel has the height of one.
    const std::int32_t rowCount = std::max(1, MyWindowEventList->MyDict->Count());
    Lookup<functions::DisableScreenUpdates>()();
    std::int32_t height = exactHeight ? newHeight : HeightByOneRow(newHeight);
    height = std::max(height, TheRowHeight);
    // Never an empty row, not even with an exact height.
    height = std::min(height, rowCount * TheRowHeight);
    std::int32_t width = newWidth;
    if (width < MinWidth())
        width = MinWidth();
    if (MaxWidth() < width)
        width = MaxWidth();
    if (height != Height())
        SetHeight(height);
    // Compared with the latest layout, not with the present size: a size that was forced on the
    // panel from outside and clamps back to the laid-out one needs no layout.
    if (width != LastWidth || height != LastHeight || exactHeight || forceLayout)
        LayOut(width, height, rowCount);
    Lookup<functions::EnableScreenUpdates>()();
}

std::int32_t Window1::HeightByOneRow(std::int32_t newHeight) const {
    // A call changes the height by one row at most, once the pointer is more than half a row away.
    // A fast pointer needs several events.
    const double half = TheRowHeight / 2.0;
    if (newHeight > Height() + half)
        return Height() + TheRowHeight;
    if (newHeight < Height() - half)
        return Height() - TheRowHeight;
    return Height();
}

void Window1::LayOut(std::int32_t width, std::int32_t height, std::int32_t rowCount) {
    SetWidth(width);
    SetHeight(height);
    Canvas1->SetTop(height - Canvas1->Height() - gripMargin);
    Canvas1->SetLeft(width - Canvas1->Width() - gripMargin);
    MyWindowEventList->SetHeight(height);
    ScrollBar1->SetHeight(height - (Canvas1->Height() + gripMargin));

    const std::int32_t visibleRows =
        ToInt32((MyWindowEventList->Height() + listOverhang) / static_cast<double>(TheRowHeight));
    const std::int32_t hiddenRows = rowCount - 1 - visibleRows + 1;
    if (hiddenRows != ScrollBar1->Maximum())
        ScrollBar1->SetMaximum(hiddenRows);
    ScrollBar1->SetInSight(std::max(1, visibleRows));
    if (ScrollBar1->Maximum() < 1) {
        // Parked beyond the edge instead of hidden, so that the wheel still finds it visible.
        MyWindowEventList->SetWidth(width);
        ScrollBar1->SetLeft(width + parkingDistance);
    } else {
        MyWindowEventList->SetWidth(width - scrollBarRoom);
        ScrollBar1->SetLeft(width - scrollBarRoom);
    }
    if (ScrollBar1->Maximum() < ScrollBar1->Value())
        ScrollBar1->SetValue(ScrollBar1->Maximum());

    Lookup<functions::SizeWindow>()(Native(), width, height, 0);
    SetMaxHeight(rowCount * TheRowHeight);
    UpdateNow();
    LastWidth = width;
    LastHeight = height;
}

void Window1::Event_Resized() {
    // A grip drag sizes the panel itself; the echo must not fight the pointer.
    if (!indrag)
        ChangeWindowSize(Width(), Height(), false, false);
}

} // namespace kqu
