#include "platform/x11/Display.h"

#include "platform/QuietErrors.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <utility>

namespace kqu::platform {

namespace {
/// More than any property that is read here can sensibly have.
constexpr std::uint32_t mostWords = 4096;

const xcb_screen_t* ScreenOfNumber(xcb_connection_t* connection, int number) {
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (screen.rem > 1 && number-- > 0)
        xcb_screen_next(&screen);
    return screen.data;
}
} // namespace

std::unique_ptr<Display> Display::Open() {
    int screenNumber = 0;
    Connected connection;
    {
        // A display that refuses us has the library print why; that is ours to report.
        const QuietErrors quiet;
        connection.reset(xcb_connect(nullptr, &screenNumber));
    }
    if (xcb_connection_has_error(connection.get()) != 0)
        return nullptr;
    // The commands that the program starts are not to hold our connection.
    const int descriptor = xcb_get_file_descriptor(connection.get());
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);

    std::unique_ptr<Display> display(new Display(std::move(connection), screenNumber));
    return display->format_ && display->format_->IsUsable() ? std::move(display) : nullptr;
}

Display::Display(Connected connection, int screenNumber)
    : connection_(std::move(connection)), screen_(ScreenOfNumber(Connection(), screenNumber)) {
    InternAtoms();
    format_ = ChooseFormat();
    colormap_ = screen_->default_colormap;
    if (format_ && Visual() != screen_->root_visual) {
        colormap_ = xcb_generate_id(Connection());
        xcb_create_colormap(Connection(), XCB_COLORMAP_ALLOC_NONE, colormap_, Root(), Visual());
    }
}

std::optional<PixelFormat> Display::ChooseFormat() const {
    // That of the root's own visual if its pixels carry their colours, else of any of at most 24
    // bits that do. More than 24 bits would make the window see-through under a compositor.
    std::optional<PixelFormat> best;
    for (auto depth = xcb_screen_allowed_depths_iterator(screen_); depth.rem > 0;
         xcb_depth_next(&depth))
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0;
             xcb_visualtype_next(&visual)) {
            if (visual.data->_class != XCB_VISUAL_CLASS_TRUE_COLOR)
                continue;
            const PixelFormat format(*xcb_get_setup(Connection()), depth.data->depth, *visual.data);
            if (format.Visual() == screen_->root_visual)
                return format;
            if (format.Depth() <= 24 && (!best || format.Depth() > best->Depth()))
                best.emplace(format);
        }
    return best;
}

void Display::InternAtoms() {
    // All in one round trip.
    std::array<xcb_intern_atom_cookie_t, atomNames.size()> cookies{};
    std::transform(atomNames.begin(), atomNames.end(), cookies.begin(), [this](auto name) {
        return xcb_intern_atom(Connection(), 0, static_cast<std::uint16_t>(name.size()),
                               name.data());
    });
    for (std::size_t index = 0; index < atomNames.size(); ++index) {
        const CPointer<xcb_intern_atom_reply_t, std::free> reply(
            xcb_intern_atom_reply(Connection(), cookies[index], nullptr));
        atoms_[index] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
}

void Display::SetWords(xcb_window_t window, AtomName property, xcb_atom_t type,
                       std::span<const std::uint32_t> words) const {
    xcb_change_property(Connection(), XCB_PROP_MODE_REPLACE, window, Atom(property), type, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
}

void Display::SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                      std::string_view text) const {
    xcb_change_property(Connection(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

unsigned int Display::AskForWords(xcb_window_t window, AtomName property, xcb_atom_t type) const {
    return xcb_get_property(Connection(), 0, window, Atom(property), type, 0, mostWords).sequence;
}

std::vector<std::uint32_t> Display::WordsOf(const void* reply, xcb_atom_t type) {
    const auto* property = static_cast<const xcb_get_property_reply_t*>(reply);
    if (property == nullptr || property->type != type || property->format != 32)
        return {};
    const auto* words = static_cast<const std::uint32_t*>(xcb_get_property_value(property));
    return {words, words + property->value_len};
}

void Display::SendToManager(xcb_window_t window, AtomName type,
                            const std::array<std::uint32_t, 5>& words) const {
    xcb_client_message_event_t message{XCB_CLIENT_MESSAGE, 32, 0, window, Atom(type), {}};
    std::copy(words.begin(), words.end(), message.data.data32);
    SendToRoot(message);
}

} // namespace kqu::platform
