#include "platform/functions/ShellFunctions.h"

#include "platform/functions/Functions.h"

#include <cstdio>
#include <string_view>

namespace kqu::platform {

namespace {
constexpr int atEnd = 1;
constexpr int inError = 1;
constexpr int failure = -1;

/// The pipe is not inherited by the next command, which may well be started before this one is at
/// its end. Everything else that is open here is close-on-exec as well, so that a command has the
/// three standard streams and what the program itself was started with.
CommandStream Start(const std::string& command, std::string_view mode) {
    // Commands are only listened to.
    return CommandStream(mode == "r" ? ::popen(command.c_str(), "re") : nullptr);
}

std::size_t Read(std::FILE* stream, void* block, std::size_t size, std::size_t count) {
    return stream == nullptr ? 0 : std::fread(block, size, count, stream);
}

/// The command's exit status in the form of wait(2).
int Close(CommandStream stream) {
    return stream ? ::pclose(stream.release()) : failure;
}
} // namespace

void RegisterShellFunctions(FunctionTable& table, Handles& handles) {
    using functions::StreamHandle;
    table.Set<functions::popen>([&handles](const std::string& command, const char* mode) {
        return handles.AddStream(Start(command, mode));
    });
    table.Set<functions::feof>([&handles](StreamHandle handle) {
        std::FILE* stream = handles.Stream(handle);
        return stream == nullptr ? atEnd : std::feof(stream);
    });
    table.Set<functions::fread>(
        [&handles](void* block, std::size_t size, std::size_t count, StreamHandle handle) {
            return Read(handles.Stream(handle), block, size, count);
        });
    table.Set<functions::ferror>([&handles](StreamHandle handle) {
        std::FILE* stream = handles.Stream(handle);
        return stream == nullptr ? inError : std::ferror(stream);
    });
    table.Set<functions::pclose>(
        [&handles](StreamHandle handle) { return Close(handles.TakeStream(handle)); });
}

} // namespace kqu::platform
