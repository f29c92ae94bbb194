#include "platform/x11/Display.h"

#include "platform/QuietErrors.h"

#include <bit>
#include <cstdlib>
#include <cstring>
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

const xcb_visualtype_t* TrueColourVisual(const xcb_depth_t* depth,
                                         std::optional<xcb_visualid_t> wanted) {
    for (auto visual = xcb_depth_visuals_iterator(depth); visual.rem > 0;
         xcb_visualtype_next(&visual))
        if (visual.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR &&
            (!wanted || visual.data->visual_id == *wanted))
            return visual.data;
    return nullptr;
}

/// A display that refuses us has the library print why; whether there is a display is ours to tell.
xcb_connection_t* ConnectQuietly(int& screenNumber) {
    const QuietErrors quiet;
    return xcb_connect(nullptr, &screenNumber);
}
} // namespace

std::unique_ptr<Display> Display::Open() {
    int screenNumber = 0;
    Connected connection(ConnectQuietly(screenNumber));
    if (xcb_connection_has_error(connection.get()) != 0)
        return nullptr;
    // The commands that the program starts are not to hold our connection.
    const int descriptor = xcb_get_file_descriptor(connection.get());
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);

    std::unique_ptr<Display> display(new Display(std::move(connection), screenNumber));
    return display->format_ && display->format_->IsUsable() ? std::move(display) : nullptr;
}

Display::Display(Connected connection, int screenNumber) : connection_(std::move(connection)) {
    xcb_prefetch_maximum_request_length(Connection());
    screen_ = ScreenOfNumber(Connection(), screenNumber);
    atoms_.emplace(Connection());
    const xcb_visualtype_t* const visual = ChooseVisual();
    if (visual == nullptr)
        return;
    format_.emplace(*xcb_get_setup(Connection()), depth_, *visual);
    visual_ = visual->visual_id;
    colormap_ = screen_->default_colormap;
    if (visual_ != screen_->root_visual) {
        colormap_ = xcb_generate_id(Connection());
        xcb_create_colormap(Connection(), XCB_COLORMAP_ALLOC_NONE, colormap_, Root(), visual_);
    }
}

const xcb_visualtype_t* Display::ChooseVisual() {
    // The root's own if its pixels carry their colours, else any of at most 24 bits that do. More
    // than 24 bits would make the window see-through under a compositor.
    const xcb_visualtype_t* other = nullptr;
    for (auto depth = xcb_screen_allowed_depths_iterator(screen_); depth.rem > 0;
         xcb_depth_next(&depth)) {
        if (const auto* roots = TrueColourVisual(depth.data, screen_->root_visual)) {
            depth_ = depth.data->depth;
            return roots;
        }
        const auto* any = TrueColourVisual(depth.data, std::nullopt);
        if (any != nullptr && depth.data->depth <= 24 && depth.data->depth > depth_) {
            other = any;
            depth_ = depth.data->depth;
        }
    }
    return other;
}

bool Display::IsLost() const {
    return xcb_connection_has_error(Connection()) != 0;
}

void Display::Flush() const {
    xcb_flush(Connection());
}

std::size_t Display::LongestRequest() const {
    return std::size_t{xcb_get_maximum_request_length(Connection())} * sizeof(std::uint32_t);
}

void Display::SetWords(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                       std::span<const std::uint32_t> words) const {
    xcb_change_property(Connection(), XCB_PROP_MODE_REPLACE, window, property, type, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
}

void Display::SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                      std::string_view text) const {
    xcb_change_property(Connection(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

void Display::DeleteProperty(xcb_window_t window, xcb_atom_t property) const {
    xcb_delete_property(Connection(), window, property);
}

xcb_get_property_cookie_t Display::AskForWords(xcb_window_t window, xcb_atom_t property,
                                               xcb_atom_t type) const {
    return xcb_get_property(Connection(), 0, window, property, type, 0, mostWords);
}

std::vector<std::uint32_t> Display::WordsOf(const xcb_get_property_reply_t* reply,
                                            xcb_atom_t type) {
    if (reply == nullptr || reply->type != type || reply->format != 32)
        return {};
    std::vector<std::uint32_t> words(reply->value_len);
    if (!words.empty())
        std::memcpy(words.data(), xcb_get_property_value(reply), words.size() * sizeof words[0]);
    return words;
}

void Display::SendToManager(xcb_window_t window, AtomName type,
                            const std::array<std::uint32_t, 5>& words) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = Atom(type);
    std::memcpy(message.data.data32, words.data(), sizeof message.data.data32);
    static_assert(sizeof message == 32);
    const auto bytes = std::bit_cast<std::array<char, sizeof message>>(message);
    xcb_send_event(Connection(), 0, Root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   bytes.data());
}

} // namespace kqu::platform
