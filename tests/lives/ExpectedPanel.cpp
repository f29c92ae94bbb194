#include "tests/lives/Expectation.h"
#include "tests/lives/Wire.h"

#include <algorithm>
#include <cmath>

// The panel as it must be: its size and place, the hand on it, and how the real one differs.

namespace kqu::lives {

namespace {
constexpr int rowHeight = 73;
constexpr int narrowest = 270;
constexpr int widest = 500;

std::string Differs(const std::string& what, const std::string& is, const std::string& should) {
    return is == should ? "" : what + ": \"" + is + "\", should be \"" + should + "\"";
}

std::string RowDiffers(const Dictionary& row, const Row& should) {
    // Drawing leaves its picture in the row.
    const int count = row.Count() - (row.HasKey("progresspict") ? 1 : 0);
    if (count != static_cast<int>(should.size()))
        return "row: " + std::to_string(count) + " keys, should be " +
               std::to_string(should.size());
    for (const auto& [key, value] : should) {
        if (!row.HasKey(key))
            return "row: no " + key;
        const Variant is = row.Value(key);
        const auto* text = std::get_if<std::string>(&value);
        if ((text != nullptr) != (is.Kind() == Variant::Type::String))
            return "row: the kind of " + key;
        const double number = text != nullptr ? 0.0 : std::get<double>(value);
        const bool isNumber =
            is.DoubleValue() == number || (std::isnan(is.DoubleValue()) && std::isnan(number));
        if (text == nullptr ? !isNumber : is.StringValue() != *text)
            return Differs("row's " + key, is.StringValue(),
                           text != nullptr ? *text : std::to_string(number));
    }
    return "";
}
} // namespace

void Expectation::ChangeSize(int newWidth, int newHeight, bool exact, bool force) {
    const int rowCount = std::max(1, Count());
    world_.Need<functions::DisableScreenUpdates>();
    int height = content_.height;
    if (exact)
        height = newHeight;
    else if (2 * (newHeight - content_.height) > rowHeight)
        height += rowHeight;
    else if (2 * (content_.height - newHeight) > rowHeight)
        height -= rowHeight;
    height = std::min(std::max(height, rowHeight), rowCount * rowHeight);
    const int width = std::clamp(newWidth, narrowest, widest);
    content_.height = height;
    if (exact || force || width != lastWidth_ || height != lastHeight_)
        LayOut(width, height, rowCount);
    world_.Need<functions::EnableScreenUpdates>();
}

void Expectation::LayOut(int width, int height, int rowCount) {
    content_.width = lastWidth_ = width;
    lastHeight_ = height;
    maximum_ = rowCount - (height + 2) / rowHeight;
    value_ = std::min(value_, std::max(0, maximum_));
    listWidth_ = maximum_ < 1 ? width : width - 11;
    listHeight_ = height;
    barLeft_ = maximum_ < 1 ? width + 1 : width - 11;
    barHeight_ = height - 15;
    maxHeight_ = rowCount * rowHeight;
    world_.Need<functions::SizeWindow>();
}

void Expectation::FindPlace() {
    const platform::Rect screen = world_.machine.windows.screens[0];
    int numbers[3] = {};
    const bool isSaved = sscanf(world_.Read(World::placeFile).c_str(),
                                "<integer>%d</integer><integer>%d</integer><integer>%d</integer>",
                                &numbers[0], &numbers[1], &numbers[2]) == 3;
    const auto [left, top, width] = numbers;
    if (isSaved && left > 0 && left < screen.width - 10 && top > 0 && top < screen.height - 10)
        content_ = {left, top, width, content_.height};
    else
        content_ = {static_cast<int>((screen.width - content_.width) / 2.0), 42, content_.width,
                    content_.height};
    savedLeft_ = content_.x;
    savedTop_ = content_.y;
    savedWidth_ = content_.width;
}

void Expectation::KeepPlace() {
    if (content_.x == savedLeft_ && content_.y == savedTop_ && content_.width == savedWidth_)
        return;
    savedLeft_ = content_.x;
    savedTop_ = content_.y;
    savedWidth_ = content_.width;
    if (!world_.preferencesFolder)
        return;
    world_.place = "";
    for (const auto& [key, value] : {std::pair("left", savedLeft_), std::pair("top", savedTop_),
                                     std::pair("width", savedWidth_)})
        *world_.place += "\t<key>" + std::string(key) + "</key>\r\t<integer>" +
                         std::to_string(value) + "</integer>\r";
}

void Expectation::Pressed(platform::Point inContent) {
    Do([&] {
        const platform::Rect grip{lastWidth_ - 18, lastHeight_ - 15, 17, 14};
        if (grip.Contains(inContent)) {
            held_ = Held::Grip;
            inDrag_ = true;
            xoffset_ = 18 - (inContent.x - grip.x);
        } else if (BarArea().Contains(inContent)) {
            held_ = Held::Bar;
        } else {
            world_.Need<functions::DragWindow>();
            ++drags_;
        }
    });
}

void Expectation::Dragged() {
    Do([&] {
        const platform::Point pointer = world_.machine.windows.pointer;
        if (held_ == Held::Grip)
            ChangeSize(pointer.x - content_.x + xoffset_, pointer.y - content_.y, false, false);
    });
}

void Expectation::Released() {
    if (std::exchange(held_, Held::Nothing) == Held::Grip)
        inDrag_ = false;
}

void Expectation::Wheel(platform::Point inContent, int deltaY) {
    const platform::Rect list{-1, -1, listWidth_, listHeight_};
    const int step = deltaY > 0 ? 1 : deltaY < 0 ? -1 : 0;
    if (list.Contains(inContent) || BarArea().Contains(inContent))
        value_ = std::max(0, std::min(value_ + step, maximum_));
}

void Expectation::ChangedFromOutside(const platform::Rect& content) {
    Do([&] {
        const bool resized = content.Extent() != content_.Extent();
        content_ = content;
        if (resized && !inDrag_)
            ChangeSize(content_.width, content_.height, false, false);
    });
}

std::string Expectation::RowsDiffer(const Dictionary& table) const {
    for (int i = 0; i < Count(); ++i) {
        const auto& [name, row] = rows_[static_cast<std::size_t>(i)];
        if (table.Key(i) != name)
            return Differs("name", table.Key(i), name);
        const std::string wrong = RowDiffers(*table.Value(name).ObjectAs<Dictionary>(), row);
        if (!wrong.empty())
            return wrong;
    }
    return "";
}

std::string Expectation::Difference() {
    if (!broken_.empty())
        return broken_;
    const Window1& panel = Window1::Instance();
    const auto& window = *world_.machine.windows.window;
    const Dictionary& table = *panel.MyWindowEventList->MyDict;
    const ScrollBar& bar = *panel.ScrollBar1;
    // Where on the bar a press or a drag leads is the bar's own matter, within its limits.
    if (held_ == Held::Bar && bar.Value() >= 0 && bar.Value() <= std::max(0, maximum_))
        value_ = bar.Value();
    auto& calls = world_.machine.windows.calls;
    alphaCallsSeen_ += std::count_if(calls.begin(), calls.end(), [](const std::string& call) {
        return call.starts_with("alpha");
    });
    calls.clear();
    const struct {
        const char* what;
        long is;
        long should;
    } numbers[] = {
        {"rows", table.Count(), Count()},
        {"width", panel.Width(), content_.width},
        {"height", panel.Height(), content_.height},
        {"left", panel.Left(), content_.x},
        {"top", panel.Top(), content_.y},
        {"window's size", window.content == content_, true},
        {"scroll range", bar.Maximum(), maximum_},
        {"scroll value", bar.Value(), value_},
        {"scroll bar's left", bar.Left(), barLeft_},
        {"scroll bar's height", bar.Height(), barHeight_},
        {"list's width", panel.MyWindowEventList->Width(), listWidth_},
        {"list's height", panel.MyWindowEventList->Height(), listHeight_},
        {"grip's left", panel.Canvas1->Left(), lastWidth_ - 18},
        {"grip's top", panel.Canvas1->Top(), lastHeight_ - 15},
        {"greatest height", panel.MaxHeight(), maxHeight_},
        {"visible", window.IsVisible(), visible_},
        {"changes of alpha", alphaCallsSeen_, alphaCalls_},
        {"LastDictcount", panel.LastDictcount, lastCount_},
        {"LastDragUpdate", panel.LastDragUpdate, lastDragUpdate_},
        {"MyInc", panel.MyInc, phase_},
        {"indrag", panel.indrag, inDrag_},
        {"Timer1", panel.Timer1->Mode() == TimerMode::Once, guards_},
        {"Timer3", panel.Timer3->Mode() == TimerMode::Once, graces_},
        {"tile updates", window.tileUpdates, tiles_},
        {"drags", window.drags, drags_},
        {"updates held", world_.machine.screenUpdates.AreHeld(), false},
        {"kept place", panel.mywidth, savedWidth_},
    };
    for (const auto& number : numbers)
        if (number.is != number.should)
            return Differs(number.what, std::to_string(number.is), std::to_string(number.should));
    const std::string rows = RowsDiffer(table);
    return rows.empty() ? Differs("title", window.title, title_) : rows;
}

std::string Expectation::DifferenceAtRest() {
    if (!passes_.empty() || !commands_.empty() || !rounds_.empty() || coming_)
        return "at rest: the program has left something out";
    if (world_.machine.processes.openStreams != 0)
        return "at rest: an open command";
    const std::string file = world_.Read(World::placeFile);
    if (world_.place && file.find(*world_.place) == std::string::npos)
        return Differs("file", file, *world_.place);
    return Difference();
}

} // namespace kqu::lives
