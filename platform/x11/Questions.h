#pragma once

#include "platform/interfaces/EventSource.h"

#include <cstdint>
#include <deque>
#include <functional>

namespace kqu::platform {

class Display;

/// Questions to the X server whose answers come as events do. Nobody waits for them: while another
/// client holds the server there are none, for as long as it likes.
class Questions {
  public:
    /// Takes the bytes of a reply, or nil where the server could not answer.
    using Answer = std::function<void(const void* reply)>;

    explicit Questions(const Display& display) : display_(display) {}

    /// Sends what was asked, a request with that sequence number.
    void Ask(unsigned int sequence, Answer answer);
    /// Posts what has been answered by now, in the order of the questions. None of it is left once
    /// the display is lost.
    void Collect(EventQueue& queue);

  private:
    struct Asked {
        unsigned int sequence;
        Answer answer;
    };

    const Display& display_;
    std::deque<Asked> asked_;
};

} // namespace kqu::platform
