#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <cstring>

namespace kqu::platform {

namespace {
constexpr std::uint32_t utf8Encoding = 0x08000100;

bool GetCString(const std::string* text, char* buffer, std::int32_t size, std::uint32_t encoding) {
    if (buffer == nullptr || size <= 0)
        return false;
    if (text == nullptr || encoding != utf8Encoding ||
        text->size() >= static_cast<std::size_t>(size)) {
        *buffer = '\0';
        return false;
    }
    std::memcpy(buffer, text->c_str(), text->size() + 1);
    return true;
}
} // namespace

void RegisterCoreFoundationFunctions(FunctionTable& table, Handles& handles) {
    const auto getCString = [&handles](functions::StringHandle string, char* buffer,
                                       std::int32_t size, std::uint32_t encoding) {
        return GetCString(handles.Text(string), buffer, size, encoding);
    };
    table.Set<functions::CFStringGetCString>(getCString);
    table.Set<functions::CFStringGetCStringOfCarbon>(getCString);
    table.Set<functions::CFRelease>([&handles](std::int32_t handle) { handles.Release(handle); });
}

} // namespace kqu::platform
