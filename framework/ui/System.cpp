#include "framework/ui/System.h"

#include "framework/values/Exceptions.h"

#include <chrono>
#include <ratio>

namespace kqu {

ScreenArea Screen(int index) {
    const auto screens = Runtime::Current().Machine().windows.Screens();
    if (index < 0 || static_cast<std::size_t>(index) >= screens.size())
        throw OutOfBoundsException("there is no screen of that number");
    const platform::Rect& area = screens[static_cast<std::size_t>(index)];
    return {area.x, area.y, area.width, area.height};
}

std::int32_t Ticks() {
    using Sixtieths = std::chrono::duration<std::int64_t, std::ratio<1, 60>>;
    const auto since = Runtime::Current().Loop().Now().time_since_epoch();
    const auto ticks = std::chrono::duration_cast<Sixtieths>(since).count();
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(ticks));
}

std::int32_t TicksBetween(std::int32_t earlier, std::int32_t later) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(later) -
                                     static_cast<std::uint32_t>(earlier));
}

} // namespace kqu
