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

template <class Kind>
const Kind* Handles::Find(Handle handle) const {
    const auto found = entries_.find(handle);
    return found == entries_.end() ? nullptr : std::get_if<Kind>(&found->second);
}

Handles::Handle Handles::AddText(std::string text) {
    return Add(std::move(text));
}

Handles::Handle Handles::AddStream(std::unique_ptr<Command> stream) {
    return stream ? Add(std::move(stream)) : 0;
}

const std::string* Handles::Text(Handle handle) const {
    return Find<std::string>(handle);
}

Command* Handles::Stream(Handle handle) const {
    const auto* stream = Find<std::unique_ptr<Command>>(handle);
    return stream == nullptr ? nullptr : stream->get();
}

void Handles::Release(Handle handle) {
    if (Text(handle) != nullptr)
        entries_.erase(handle);
}

std::unique_ptr<Command> Handles::TakeStream(Handle handle) {
    if (Stream(handle) == nullptr)
        return nullptr;
    return std::get<std::unique_ptr<Command>>(std::move(entries_.extract(handle).mapped()));
}

} // namespace kqu::platform
