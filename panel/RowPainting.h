#pragma once

#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "framework/values/Dictionary.h"
#include "panel/Window1.h"

#include <string>

namespace kqu {

/// One row of the list while it is painted.
struct RowPainting {
    Window1& panel;
    Dictionary& record;
    /// What the row is painted on, and the canvas that it is meant for: text is measured on either.
    Graphics& picture;
    Graphics& canvas;
    /// The row's top in the picture.
    int top;

    [[nodiscard]] int ListWidth() const { return panel.MyWindowEventList->Width(); }

    void DrawIcon(const Ref<Picture>& icon) const;
    /// Draws a line at the text left that belongs to the slot.
    void DrawLine(const std::string& text, int slot, int baseline) const;
    /// Shortens a text, which gives way in its middle, to the list's width less a margin.
    [[nodiscard]] std::string Shortened(const std::string& text, int margin) const;
    [[nodiscard]] bool Has(const char* key) const { return record.HasKey(key); }
    [[nodiscard]] std::string TextOf(const char* key) const {
        return record.Value(key).StringValue();
    }
};

/// The width that a row type's icon takes from its texts. It is that of the type's reference
/// picture, whichever icon is shown. Raises NilObjectException if that picture is missing.
[[nodiscard]] int SlotOf(const Ref<Picture>& reference);

// The three kinds of row. Each draws icon and texts and returns the slot.
int PaintBackupRow(const RowPainting& row);
int PaintScannerRow(const RowPainting& row);
int PaintDefragRow(const RowPainting& row);

// What any kind of row may have.
void PaintProgressPart(const RowPainting& row, int slot);
void PaintBadge(const RowPainting& row);

} // namespace kqu
