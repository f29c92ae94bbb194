#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <cstdint>

namespace kqu::platform {

namespace {
constexpr std::int32_t success = 0;
constexpr std::int32_t invalidWindow = -5600;

/// The status of an action on a window that may be nil.
template <class Action>
std::int32_t On(NativeWindow* window, Action action) {
    if (window == nullptr)
        return invalidWindow;
    action(*window);
    return success;
}
} // namespace

void RegisterWindowFunctions(FunctionTable& table, ScreenUpdates& updates) {
    table.Set<functions::SetWindowAlpha>([](NativeWindow* window, float alpha) {
        return On(window, [=](NativeWindow& given) { given.SetAlpha(alpha); });
    });
    table.Set<functions::ChangeWindowAttributes>(
        [](NativeWindow* window, std::uint32_t set, std::uint32_t clear) {
            return On(window, [=](NativeWindow& given) { given.ChangeAttributes(set, clear); });
        });
    table.Set<functions::IsWindowCollapsed>(
        [](NativeWindow* window) { return window != nullptr && window->IsCollapsed(); });
    table.Set<functions::UpdateCollapsedWindowDockTile>([](NativeWindow* window) {
        return On(window, [](NativeWindow& given) { given.UpdateDockTile(); });
    });
    // The last argument asks for an update of the new area; every change of size brings one here.
    table.Set<functions::SizeWindow>(
        [](NativeWindow* window, std::int32_t width, std::int32_t height, std::int32_t) {
            On(window, [=](NativeWindow& given) { given.SetSize({width, height}); });
        });
    // Nobody passes bounds: the panel may be dragged anywhere.
    table.Set<functions::DragWindow>([](NativeWindow* window, Point start, const Rect*) {
        On(window, [=](NativeWindow& given) { given.BeginDrag(start); });
    });
    table.Set<functions::DisableScreenUpdates>([&updates] {
        updates.Disable();
        return success;
    });
    table.Set<functions::EnableScreenUpdates>([&updates] {
        updates.Enable();
        return success;
    });
}

} // namespace kqu::platform
