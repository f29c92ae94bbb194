#pragma once

#include "framework/ui/Canvas.h"
#include "framework/ui/Picture.h"
#include "framework/values/Dictionary.h"
#include "framework/values/Object.h"

#include <cstdint>

namespace kqu {

/// The canvas that shows the rows. It owns the task table, with one row for each task, and the
/// parts of the progress bars.
class MyEventList : public Canvas {
  public:
    MyEventList(Window& ownerWindow, const CanvasSettings& settings);

    /// The task table: the whole name of a notification -> the row of its task, a Dictionary.
    Ref<Dictionary> MyDict;
    /// The tick mark of the bars, 2 pixels wide; made once.
    Ref<Picture> ProgressSep;
    /// The latest empty track and full fill. Each is made anew when a bar has another width.
    Ref<Picture> WhitePict;
    Ref<Picture> BluePict;
    /// The line between rows, 1 by 1.
    Ref<Picture> MySep;

    /// The canvas's open event: makes the empty table and the separator.
    void Event_Open();

    /// Makes the picture of one progress bar and leaves it in `record` under "progresspict".
    /// `width` in pixels, at least 1; `value` of `maximum`, in the same unit; a value of -1.0 gives
    /// an empty picture. Raises NilObjectException if the bar's artwork is missing.
    void ListProgress(std::int32_t width, double value, double maximum, Dictionary& record);
};

} // namespace kqu
