#include "platform/x11/Questions.h"

#include "platform/x11/Display.h"

#include <cstdlib>
#include <memory>
#include <utility>
#include <xcb/xcbext.h>

namespace kqu::platform {

void Questions::Ask(unsigned int sequence, Answer answer) {
    asked_.push_back({sequence, std::move(answer)});
    display_.Flush();
}

void Questions::Collect(EventQueue& queue) {
    while (!asked_.empty()) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(display_.Connection(), asked_.front().sequence, &reply, &error) == 0)
            return;
        std::free(error);
        const std::shared_ptr<const void> owned(reply, std::free);
        queue.Post([owned, answer = std::move(asked_.front().answer)] { answer(owned.get()); });
        asked_.pop_front();
    }
}

} // namespace kqu::platform
