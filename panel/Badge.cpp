#include "framework/values/Object.h"
#include "framework/values/Text.h"
#include "panel/Pictures.h"
#include "panel/RowLayout.h"
#include "panel/RowPainting.h"

namespace kqu {

using namespace rowlayout;

void PaintBadge(const RowPainting& row) {
    if (!row.Has("Extra"))
        return;
    const std::string wish = row.TextOf("Extra");
    const bool isSleep = EqualsIgnoringCase(wish, "sleep");
    if (!isSleep && !EqualsIgnoringCase(wish, "shutdown"))
        return;
    // Both badges have the size of this one. Its shape, or the other's, cuts the flat colour.
    const Ref<Picture> size = Required(ShutdownMask2());
    const Ref<Picture> badge = NewPicture(size->Width(), size->Height(), pictureDepth);
    badge->Graphics().SetForeColor(badgeColour);
    badge->Graphics().FillRect(0, 0, badge->Width(), badge->Height());
    const Ref<Picture> stencil = isSleep ? SleepMask2() : ShutdownMask2();
    badge->Mask(MaskCreation::MakeIfMissing)->Graphics().DrawPicture(*Required(stencil), 0, 0);
    row.picture.DrawPicture(*badge, badgeLeft,
                            row.top + row.panel.TheRowHeight - (badge->Height() + badgeBottom));
}

} // namespace kqu
