#include "platform/functions/Handles.h"

#include <limits>
#include <utility>

namespace kqu::platform {

Handles::Handle Handles::Add(Entry entry) {
    do
        last_ = last_ == std::numeric_limits<Handle>::max() ? 1 : last_ + 1;
    while (entries_.contains(last_));
    entries_.emplace(last_, std::move(entry));
    return last_;
}

template <class T>
const T* Handles::Find(Handle handle) const {
    const auto found = entries_.find(handle);
    return found == entries_.end() ? nullptr : std::get_if<T>(&found->second);
}

Handles::Handle Handles::AddText(std::string text) {
    return Add(OwnedText{std::move(text)});
}

Handles::Handle Handles::UnownedText(std::string_view text) {
    for (const auto& [handle, entry] : entries_)
        if (const auto* lasting = std::get_if<LastingText>(&entry);
            lasting != nullptr && lasting->text == text)
            return handle;
    return Add(LastingText{std::string(text)});
}

Handles::Handle Handles::AddBlob(std::string bytes) {
    return Add(Bytes{std::move(bytes)});
}

Handles::Handle Handles::AddStream(std::unique_ptr<Command> stream) {
    return stream ? Add(std::move(stream)) : 0;
}

const std::string* Handles::Text(Handle handle) const {
    if (const auto* owned = Find<OwnedText>(handle))
        return &owned->text;
    const auto* lasting = Find<LastingText>(handle);
    return lasting == nullptr ? nullptr : &lasting->text;
}

const std::string* Handles::Blob(Handle handle) const {
    const auto* blob = Find<Bytes>(handle);
    return blob == nullptr ? nullptr : &blob->bytes;
}

Command* Handles::Stream(Handle handle) const {
    const auto* stream = Find<std::unique_ptr<Command>>(handle);
    return stream == nullptr ? nullptr : stream->get();
}

void Handles::Release(Handle handle) {
    if (Find<OwnedText>(handle) != nullptr || Find<Bytes>(handle) != nullptr)
        entries_.erase(handle);
}

std::unique_ptr<Command> Handles::TakeStream(Handle handle) {
    if (Find<std::unique_ptr<Command>>(handle) == nullptr)
        return nullptr;
    auto entry = entries_.extract(handle);
    return std::get<std::unique_ptr<Command>>(std::move(entry.mapped()));
}

} // namespace kqu::platform
