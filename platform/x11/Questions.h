#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/x11/X11Event.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>

namespace kqu::platform {

class Display;

/// Questions to the X server whose answers come as events do, each in its place among the events:
/// what it says is younger than all that was told before it, and older than what is told after it.
/// Nobody waits for them: while another client holds the server there are none, for as long as it
/// likes.
class Questions {
  public:
    /// Takes the bytes of a reply, or nil where the server could not answer.
    using Answer = std::function<void(const void* reply)>;

    explicit Questions(const Display& display) : display_(display) {}

    /// Sends what was asked, a request with that sequence number.
    void Ask(unsigned int sequence, Answer answer);
    /// Waits for the answers to all questions, those asked on the way included, and delivers them.
    void AwaitAll();
    /// Posts the answers that the server sent before the event, which has been received.
    void PostBefore(const X11Event& event, EventQueue& queue);
    /// Takes in what has been answered by now. Events that are received on the way are left to be
    /// collected, and come before what PostAll posts.
    void TakeIn();
    /// Posts all that was taken in, in the order of the questions.
    void PostAll(EventQueue& queue);

  private:
    struct Asked {
        unsigned int sequence;
        Answer answer;
        /// Once it was taken in.
        std::optional<std::shared_ptr<const void>> reply;
    };

    /// False if there is no answer yet.
    [[nodiscard]] bool TakeIn(Asked& question) const;
    void PostFirst(EventQueue& queue);

    const Display& display_;
    std::deque<Asked> asked_;
};

} // namespace kqu::platform
