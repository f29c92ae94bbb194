#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <memory>
#include <string_view>

namespace kqu::platform {

namespace {
constexpr int failure = -1;
} // namespace

void RegisterShellFunctions(FunctionTable& table, Handles& handles) {
    using functions::StreamHandle;
    table.Set<functions::popen>([&handles](const std::string& command, const char* mode) {
        // Commands are only listened to.
        return handles.AddStream(mode == std::string_view("r") ? Command::Start(command) : nullptr);
    });
    table.Set<functions::feof>([&handles](StreamHandle handle) {
        const Command* stream = handles.Stream(handle);
        return stream == nullptr || stream->IsAtEnd() ? 1 : 0;
    });
    table.Set<functions::fread>(
        [&handles](void* block, std::size_t size, std::size_t count, StreamHandle handle) {
            Command* stream = handles.Stream(handle);
            const std::size_t bytes = size * count;
            return stream == nullptr || bytes == 0
                       ? 0
                       : stream->Read(static_cast<std::byte*>(block), bytes) / size;
        });
    table.Set<functions::ferror>([&handles](StreamHandle handle) {
        const Command* stream = handles.Stream(handle);
        return stream == nullptr || stream->IsInError() ? 1 : 0;
    });
    table.Set<functions::pclose>([&handles](StreamHandle handle) {
        const std::unique_ptr<Command> stream = handles.TakeStream(handle);
        return stream ? stream->Close() : failure;
    });
}

} // namespace kqu::platform
