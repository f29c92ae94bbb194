#pragma once

#include "platform/functions/Command.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kqu::platform {

/// All that the platform keeps behind references of 32 bits: texts, blobs and streams. A handle is
/// a small positive number; 0 stands for nothing. Numbers are not used again before all others have
/// been, so that a handle that is released twice, or used after its release, names nothing.
class Handles {
  public:
    using Handle = std::int32_t;

    /// A text in UTF-8 that belongs to its receiver, who has to release it.
    [[nodiscard]] Handle AddText(std::string text);
    /// A text that belongs to nobody and stays: releasing it does nothing. Equal texts share one
    /// handle.
    [[nodiscard]] Handle UnownedText(std::string_view text);
    /// Bytes without a meaning to their receiver, who has to release them.
    [[nodiscard]] Handle AddBlob(std::string bytes);
    /// 0 for no stream.
    [[nodiscard]] Handle AddStream(std::unique_ptr<Command> stream);

    // Nil for a handle that stands for nothing or for something else.
    [[nodiscard]] const std::string* Text(Handle handle) const;
    [[nodiscard]] const std::string* Blob(Handle handle) const;
    [[nodiscard]] Command* Stream(Handle handle) const;

    /// Releases a text or a blob; anything else is left alone.
    void Release(Handle handle);
    /// Hands a stream over and forgets it; nil if there is none.
    [[nodiscard]] std::unique_ptr<Command> TakeStream(Handle handle);

  private:
    enum class Kind { OwnedText, LastingText, Blob, Stream };
    struct Entry {
        Kind kind;
        std::string bytes;
        std::unique_ptr<Command> stream;
    };

    [[nodiscard]] Handle Add(Kind kind, std::string bytes, std::unique_ptr<Command> stream = {});
    /// Nil if the handle stands for nothing or for something of another kind.
    [[nodiscard]] const Entry* Find(Handle handle, Kind kind) const;

    std::map<Handle, Entry> entries_;
    Handle last_ = 0;
};

} // namespace kqu::platform
