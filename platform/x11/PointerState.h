#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/Display.h"

namespace kqu::platform {

/// Where the pointer is and whether the primary button is held, anywhere on the display. The
/// answer is kept until Forget, so that many questions in a row cost one round trip.
///
/// A window manager may hold the whole server while the user moves a window. Then the answer comes
/// late: it is waited for a moment only, and until it is there the former one holds.
class PointerState {
  public:
    explicit PointerState(const Display& display) : display_(display) {}

    void Forget() { isFresh_ = false; }
    [[nodiscard]] Point OnRoot();
    [[nodiscard]] bool PrimaryButtonDown();
    /// While `isLost`, the button counts as released whatever the server says, until it says so
    /// too.
    void SetReleaseLost(bool isLost) { releaseIsLost_ = isLost; }
    /// Asks anew; false while the server leaves a question unanswered.
    [[nodiscard]] bool ServerAnswers();

  private:
    void Refresh();
    [[nodiscard]] bool TakeAnswer();

    const Display& display_;
    bool isFresh_ = false;
    /// The sequence number of a question that has no answer yet; 0 if there is none.
    unsigned int asked_ = 0;
    Point onRoot_;
    bool buttonDown_ = false;
    bool releaseIsLost_ = false;
};

} // namespace kqu::platform
