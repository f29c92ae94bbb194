#pragma once

#include "platform/functions/Command.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>

namespace kqu::platform {

/// All that the platform keeps behind references of 32 bits: texts and streams. A handle is a small
/// positive number; 0 stands for nothing. Numbers are not used again before all others have been,
/// so that a handle that is released twice, or used after its release, names nothing.
class Handles {
  public:
    using Handle = std::int32_t;

    /// Bytes that belong to their receiver, who has to release them. A text is in UTF-8.
    [[nodiscard]] Handle AddText(std::string text);
    /// 0 for no stream.
    [[nodiscard]] Handle AddStream(std::unique_ptr<Command> stream);

    // Nil for a handle that stands for nothing or for something else.
    [[nodiscard]] const std::string* Text(Handle handle) const;
    [[nodiscard]] Command* Stream(Handle handle) const;

    /// Releases a text; anything else is left alone.
    void Release(Handle handle);
    /// Hands a stream over and forgets it; nil if there is none.
    [[nodiscard]] std::unique_ptr<Command> TakeStream(Handle handle);

  private:
    using Entry = std::variant<std::string, std::unique_ptr<Command>>;

    [[nodiscard]] Handle Add(Entry entry);
    /// Nil if the handle stands for nothing or for something of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* Find(Handle handle) const;

    std::map<Handle, Entry> entries_;
    Handle last_ = 0;
};

} // namespace kqu::platform
