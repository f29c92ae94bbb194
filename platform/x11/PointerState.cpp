#include "platform/x11/PointerState.h"

#include "platform/CDeleter.h"

#include <chrono>
#include <cstdlib>
#include <poll.h>
#include <utility>
#include <xcb/xcbext.h>

namespace kqu::platform {

namespace {
constexpr std::chrono::milliseconds patience{250};
}

Point PointerState::OnRoot() {
    Refresh();
    return onRoot_;
}

bool PointerState::PrimaryButtonDown() {
    Refresh();
    return buttonDown_ && !releaseIsLost_;
}

bool PointerState::ServerAnswers() {
    Forget();
    Refresh();
    return asked_ == 0;
}

void PointerState::Refresh() {
    if (std::exchange(isFresh_, true) || (asked_ != 0 && !TakeAnswer()))
        return;
    asked_ = xcb_query_pointer(display_.Connection(), display_.Root()).sequence;
    display_.Flush();
    // What arrives first may be events.
    const auto end = std::chrono::steady_clock::now() + patience;
    pollfd answer{xcb_get_file_descriptor(display_.Connection()), POLLIN, 0};
    while (!TakeAnswer()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0 || poll(&answer, 1, static_cast<int>(left.count())) <= 0)
            return;
    }
}

bool PointerState::TakeAnswer() {
    void* answer = nullptr;
    if (xcb_poll_for_reply(display_.Connection(), asked_, &answer, nullptr) == 0)
        return false;
    asked_ = 0;
    const CPointer<xcb_query_pointer_reply_t, std::free> reply(
        static_cast<xcb_query_pointer_reply_t*>(answer));
    if (reply) {
        onRoot_ = {reply->root_x, reply->root_y};
        buttonDown_ = (reply->mask & XCB_KEY_BUT_MASK_BUTTON_1) != 0;
        releaseIsLost_ = releaseIsLost_ && buttonDown_;
    }
    return true;
}

} // namespace kqu::platform
