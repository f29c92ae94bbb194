#include "platform/x11/Questions.h"

#include "platform/CDeleter.h"
#include "platform/x11/Display.h"

#include <cstdint>
#include <cstdlib>
#include <utility>
#include <xcb/xcbext.h>

namespace kqu::platform {

void Questions::Ask(unsigned int sequence, Answer answer) {
    asked_.push_back({sequence, std::move(answer), std::nullopt});
    display_.Flush();
}

void Questions::AwaitAll() {
    while (!asked_.empty()) {
        const Asked first = std::move(asked_.front());
        asked_.pop_front();
        const CPointer<void, std::free> reply(
            xcb_wait_for_reply(display_.Connection(), first.sequence, nullptr));
        first.answer(reply.get());
    }
}

void Questions::PostBefore(const X11Event& event, EventQueue& queue) {
    // An event bears the number of the last request that the server had taken up. Numbers begin
    // anew after the largest one.
    while (!asked_.empty() &&
           static_cast<std::int32_t>(asked_.front().sequence - event.raw.full_sequence) <= 0 &&
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
    void* reply = nullptr;
    if (question.reply)
        return true;
    if (xcb_poll_for_reply(display_.Connection(), question.sequence, &reply, nullptr) == 0)
        return false;
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
