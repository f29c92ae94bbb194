#include "platform/functions/Handles.h"

#include <limits>
#include <utility>

namespace kqu::platform {

Handles::Handle Handles::Add(Kind kind, std::string bytes, std::unique_ptr<Command> stream) {
    do
        last_ = last_ == std::numeric_limits<Handle>::max() ? 1 : last_ + 1;
    while (entries_.contains(last_));
    entries_.emplace(last_, Entry{kind, std::move(bytes), std::move(stream)});
    return last_;
}

const Handles::Entry* Handles::Find(Handle handle, Kind kind) const {
    const auto found = entries_.find(handle);
    return found == entries_.end() || found->second.kind != kind ? nullptr : &found->second;
}

Handles::Handle Handles::AddText(std::string text) {
    return Add(Kind::OwnedText, std::move(text));
}

Handles::Handle Handles::UnownedText(std::string_view text) {
    for (const auto& [handle, entry] : entries_)
        if (entry.kind == Kind::LastingText && entry.bytes == text)
            return handle;
    return Add(Kind::LastingText, std::string(text));
}

Handles::Handle Handles::AddBlob(std::string bytes) {
    return Add(Kind::Blob, std::move(bytes));
}

Handles::Handle Handles::AddStream(std::unique_ptr<Command> stream) {
    return stream ? Add(Kind::Stream, {}, std::move(stream)) : 0;
}

const std::string* Handles::Text(Handle handle) const {
    const Entry* owned = Find(handle, Kind::OwnedText);
    const Entry* text = owned != nullptr ? owned : Find(handle, Kind::LastingText);
    return text == nullptr ? nullptr : &text->bytes;
}

const std::string* Handles::Blob(Handle handle) const {
    const Entry* blob = Find(handle, Kind::Blob);
    return blob == nullptr ? nullptr : &blob->bytes;
}

Command* Handles::Stream(Handle handle) const {
    const Entry* entry = Find(handle, Kind::Stream);
    return entry == nullptr ? nullptr : entry->stream.get();
}

void Handles::Release(Handle handle) {
    if (Find(handle, Kind::OwnedText) != nullptr || Find(handle, Kind::Blob) != nullptr)
        entries_.erase(handle);
}

std::unique_ptr<Command> Handles::TakeStream(Handle handle) {
    if (Find(handle, Kind::Stream) == nullptr)
        return nullptr;
    return std::move(entries_.extract(handle).mapped().stream);
}

} // namespace kqu::platform
