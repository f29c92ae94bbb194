#include "platform/x11/Questions.h"

#include "platform/x11/Display.h"

#include <cstdint>
#include <cstdlib>
#include <utility>
#include <xcb/xcbext.h>

namespace kqu::platform {

namespace {
/// Sequence numbers begin anew after the largest one.
bool IsLater(std::uint32_t one, std::uint32_t other) {
    return static_cast<std::int32_t>(one - other) > 0;
}
} // namespace

void Questions::Ask(unsigned int sequence, Answer answer) {
    asked_.push_back({sequence, std::move(answer), std::nullopt});
    display_.Flush();
}

void Questions::PostBefore(const X11Event& event, EventQueue& queue) {
    // An event bears the number of the last request that the server had taken up.
    while (!asked_.empty() && !IsLater(asked_.front().sequence, event.raw.full_sequence) &&
           TakeIn(asked_.front()))
        PostFirst(queue);
}

void Questions::TakeIn() {
    for (Asked& question : asked_)
        if (!TakeIn(question))
            return;
}

void Questions::PostAll(EventQueue& queue) {
    while (!asked_.empty() && asked_.front().reply)
        PostFirst(queue);
}

bool Questions::TakeIn(Asked& question) const {
    if (question.reply)
        return true;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(display_.Connection(), question.sequence, &reply, &error) == 0)
        return false;
    std::free(error);
    question.reply.emplace(reply, std::free);
    return true;
}

void Questions::PostFirst(EventQueue& queue) {
    Asked first = std::move(asked_.front());
    asked_.pop_front();
    queue.Post([reply = std::move(*first.reply), answer = std::move(first.answer)] {
        answer(reply.get());
    });
}

} // namespace kqu::platform
