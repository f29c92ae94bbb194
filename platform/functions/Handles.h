#pragma once

#include "platform/CDeleter.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace kqu::platform {

/// A stream on a command that runs in the shell. Dropping it closes its end of the pipe and waits
/// for the command.
using CommandStream = CPointer<std::FILE, ::pclose>;

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
    [[nodiscard]] Handle AddStream(CommandStream stream);

    // Nil for a handle that stands for nothing or for something else.
    [[nodiscard]] const std::string* Text(Handle handle) const;
    [[nodiscard]] const std::string* Blob(Handle handle) const;
    [[nodiscard]] std::FILE* Stream(Handle handle) const;

    /// Releases a text or a blob; anything else is left alone.
    void Release(Handle handle);
    /// Hands a stream over and forgets it; nil if there is none.
    [[nodiscard]] CommandStream TakeStream(Handle handle);

  private:
    struct OwnedText {
        std::string text;
    };
    struct LastingText {
        std::string text;
    };
    struct Bytes {
        std::string bytes;
    };
    using Entry = std::variant<OwnedText, LastingText, Bytes, CommandStream>;

    [[nodiscard]] Handle Add(Entry entry);
    template <class T>
    [[nodiscard]] const T* Find(Handle handle) const;

    std::map<Handle, Entry> entries_;
    Handle last_ = 0;
};

} // namespace kqu::platform
