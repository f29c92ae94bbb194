#include "platform/x11/DesktopScale.h"

#include "platform/CDeleter.h"
#include "platform/interfaces/DeviceScale.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace kqu::platform {

namespace {
constexpr int largestScale = 3;
constexpr double usualResolution = 96;
/// In words: more than any sensible property of this kind has.
constexpr std::uint32_t mostWords = 1U << 16;

/// Reads the fields of an XSETTINGS property in order; all are 0 beyond its end.
class Fields {
  public:
    explicit Fields(std::span<const std::byte> bytes) : rest_(bytes) {}

    [[nodiscard]] bool IsAtEnd() const { return rest_.empty(); }
    std::span<const std::byte> Take(std::size_t count) {
        const auto taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    std::uint32_t Number(std::size_t bytes) {
        std::uint32_t number = 0;
        const auto field = Take(bytes);
        for (std::size_t i = 0; i < field.size(); ++i)
            number = number << 8U |
                     std::to_integer<std::uint32_t>(field[leastFirst_ ? field.size() - 1 - i : i]);
        return number;
    }
    /// A text of that length, padded to whole words.
    std::string_view Text(std::size_t length) {
        const auto bytes = Take(length);
        static_cast<void>(Take((4 - length % 4) % 4));
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    void SetLeastFirst(bool leastFirst) { leastFirst_ = leastFirst; }

  private:
    std::span<const std::byte> rest_;
    bool leastFirst_ = false;
};

template <class Reply>
using Owned = CPointer<Reply, std::free>;

std::span<const std::byte> BytesOf(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 8)
        return {};
    return {static_cast<const std::byte*>(xcb_get_property_value(reply)),
            static_cast<std::size_t>(xcb_get_property_value_length(reply))};
}

std::string_view TextOf(const xcb_get_property_reply_t* reply) {
    const auto bytes = BytesOf(reply);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
} // namespace

std::optional<int> WindowScalingFactor(std::span<const std::byte> settings) {
    enum Type : std::uint32_t { Integer, Text, Colour };
    constexpr std::size_t colourBytes = 8;
    Fields fields(settings);
    fields.SetLeastFirst(fields.Number(1) == 0);
    static_cast<void>(fields.Take(3 + 4));
    for (std::uint32_t left = fields.Number(4); left > 0 && !fields.IsAtEnd(); --left) {
        const std::uint32_t type = fields.Number(1);
        static_cast<void>(fields.Take(1));
        const std::string_view name = fields.Text(fields.Number(2));
        static_cast<void>(fields.Take(4));
        if (type == Integer) {
            if (fields.IsAtEnd())
                return std::nullopt;
            const std::uint32_t value = fields.Number(4);
            if (name == "Gdk/WindowScalingFactor")
                return static_cast<int>(std::min<std::uint32_t>(value, largestScale));
        } else if (type == Text) {
            static_cast<void>(fields.Text(fields.Number(4)));
        } else if (type == Colour) {
            static_cast<void>(fields.Take(colourBytes));
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<int> ScaleOfResources(std::string_view database) {
    constexpr std::string_view name = "Xft.dpi:";
    for (std::size_t start = 0; start < database.size();) {
        const std::size_t end = std::min(database.find('\n', start), database.size());
        std::string_view line = database.substr(start, end - start);
        start = end + 1;
        if (!line.starts_with(name))
            continue;
        line.remove_prefix(std::min(line.find_first_not_of(" \t", name.size()), line.size()));
        double resolution = 0;
        const auto read = std::from_chars(line.data(), line.data() + line.size(), resolution);
        if (read.ec != std::errc() || !std::isfinite(resolution))
            return std::nullopt;
        return static_cast<int>(std::clamp(std::round(resolution / usualResolution), 1.0,
                                           static_cast<double>(largestScale)));
    }
    return std::nullopt;
}

DesktopScale::DesktopScale(const Display& display, Questions& questions,
                           std::function<void()> changed)
    : display_(display), questions_(questions), changed_(std::move(changed)) {
    xcb_connection_t* const connection = display_.Connection();
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, AskForManager(), nullptr));
    manager_ = owner ? owner->owner : 0;
    std::optional<int> scale;
    if (manager_ != 0) {
        const Owned<Property> settings(
            xcb_get_property_reply(connection, AskForSettings(), nullptr));
        scale = WindowScalingFactor(BytesOf(settings.get()));
    }
    if (!scale) {
        const Owned<Property> resources(
            xcb_get_property_reply(connection, AskForResources(), nullptr));
        scale = ScaleOfResources(TextOf(resources.get()));
    }
    DeviceScale() = std::max(scale.value_or(1), 1);
}

xcb_get_selection_owner_cookie_t DesktopScale::AskForManager() const {
    return xcb_get_selection_owner(display_.Connection(), display_.Atom(AtomName::XSettingsS0));
}

xcb_get_property_cookie_t DesktopScale::AskForSettings() const {
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(display_.Connection(), manager_, XCB_CW_EVENT_MASK, &events);
    const xcb_atom_t settings = display_.Atom(AtomName::XSettingsSettings);
    return xcb_get_property(display_.Connection(), 0, manager_, settings, settings, 0, mostWords);
}

xcb_get_property_cookie_t DesktopScale::AskForResources() const {
    return xcb_get_property(display_.Connection(), 0, display_.Root(), XCB_ATOM_RESOURCE_MANAGER,
                            XCB_ATOM_STRING, 0, mostWords);
}

void DesktopScale::Handle(const X11Event& event) {
    const auto property = event.As<xcb_property_notify_event_t>();
    const auto message = event.As<xcb_client_message_event_t>();
    const bool isNews =
        (event.Type() == XCB_PROPERTY_NOTIFY &&
         property.atom == (property.window == display_.Root()
                               ? xcb_atom_t{XCB_ATOM_RESOURCE_MANAGER}
                               : display_.Atom(AtomName::XSettingsSettings))) ||
        (event.Type() == XCB_DESTROY_NOTIFY &&
         event.As<xcb_destroy_notify_event_t>().window == manager_) ||
        (event.Type() == XCB_CLIENT_MESSAGE && message.type == display_.Atom(AtomName::Manager) &&
         message.data.data32[1] == display_.Atom(AtomName::XSettingsS0));
    if (isNews)
        Refresh();
}

void DesktopScale::Refresh() {
    questions_.Ask(AskForManager().sequence, [this](const void* answer) {
        const auto* owner = static_cast<const xcb_get_selection_owner_reply_t*>(answer);
        manager_ = owner != nullptr ? owner->owner : 0;
        if (manager_ == 0) {
            RefreshFromResources();
            return;
        }
        questions_.Ask(AskForSettings().sequence, [this](const void* settings) {
            if (const auto scale =
                    WindowScalingFactor(BytesOf(static_cast<const Property*>(settings))))
                Take(scale);
            else
                RefreshFromResources();
        });
    });
}

void DesktopScale::RefreshFromResources() {
    questions_.Ask(AskForResources().sequence, [this](const void* resources) {
        Take(ScaleOfResources(TextOf(static_cast<const Property*>(resources))));
    });
}

void DesktopScale::Take(std::optional<int> scale) {
    const int usable = std::max(scale.value_or(1), 1);
    if (std::exchange(DeviceScale(), usable) != usable)
        changed_();
}

} // namespace kqu::platform
