#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/interfaces/Waiting.h"
#include "platform/x11/Display.h"
#include "platform/x11/EchoFilter.h"
#include "platform/x11/PointArithmetic.h"
#include "platform/x11/Questions.h"
#include "platform/x11/WindowHints.h"
#include "platform/x11/WindowSurface.h"
#include "platform/x11/X11Event.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kqu::platform {

class X11WindowSystem;

/// A top-level window on the X server. Its methods stand by subject in X11Window.cpp (changes and
/// Commit), X11WindowMapping.cpp, X11WindowGeometry.cpp, X11WindowInput.cpp and
/// X11WindowDragging.cpp.
///
/// It is mapped exactly while it is shown and not transparent. Places are kept on the root window,
/// in device pixels, and told and taken on the desktop in logical ones, whose origin is the main
/// screen's top left.
class X11Window final : public NativeWindow {
  public:
    X11Window(X11WindowSystem& system, const Display& display, const NativeWindowSettings& settings,
              NativeWindowOwner& owner);
    ~X11Window() override;
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    void SetTitle(std::string_view title) override;
    void SetPosition(Point onDesktop) override { wanted_ = {onDesktop, wanted_.size}; }
    void SetSize(Size size) override;
    void ChangeAttributes(std::uint32_t set, std::uint32_t clear) override;
    void SetAlpha(float alpha) override;
    void Show() override { isShown_ = true; }
    void Hide() override { isShown_ = false; }
    [[nodiscard]] bool IsCollapsed() override { return IsMinimised(); }
    void UpdateDockTile() override { iconWanted_ = true; }
    void BeginDrag(Point start) override;
    void Present(const Rect& changed) override;
    void Commit() override;

    [[nodiscard]] xcb_window_t Id() const { return id_.value; }
    /// One event of this window, from the event loop.
    void Handle(const X11Event& event);
    void ScreensChanged();
    void ScaleChanged();
    /// When HandleDue is to be called.
    [[nodiscard]] std::optional<Moment> Due() const;
    /// True, once, if that moment has come; HandleDue then has to follow.
    [[nodiscard]] bool TakeDue(Moment now);
    void HandleDue();

  private:
    enum class Mapping { Withdrawn, Up, Withdrawing };
    /// The actions of a _NET_WM_STATE message (EWMH).
    enum class NetStateChange : std::uint32_t { Remove, Add };

    /// The window on the server; made before all that needs its id, destroyed behind it.
    struct ServerWindow {
        ServerWindow(const Display& onDisplay, const Rect& onRoot);
        ~ServerWindow();
        ServerWindow(const ServerWindow&) = delete;
        ServerWindow& operator=(const ServerWindow&) = delete;
        const Display& display;
        xcb_window_t value;
    };

    struct Wanted {
        Point onDesktop;
        Size size;
    };

    struct PlaceQuestion {
        unsigned int sequence;
        /// Where the window was thought to be when it was asked.
        Point actual;
    };

    struct Drag {
        unsigned int number;
        Point pointerAtStart;
        Point placeAtStart;
        bool managerCan = false;
        /// Not before it is known that no manager moves the window.
        bool isOurs = false;
    };

    /// Asks the server; the answer is dropped with the window.
    void Ask(unsigned int sequence, Questions::Answer answer);

    [[nodiscard]] bool IsMinimised() const { return isIconic_ || isHidden_; }

    // Changes that wait for Commit.
    [[nodiscard]] bool NeedsPixels() const;
    void CommitProperties();
    void CommitContent(Moment now);
    void CommitIcon();

    // Mapping.
    void Map(Moment now);
    void Withdraw(Moment now);
    void FinishWithdrawing();
    void OnMapped();
    void OnUnmapped();
    void OnProperty(xcb_atom_t property);
    void OnState(std::uint32_t state);
    void OnNetState(const std::vector<std::uint32_t>& states);
    void ChangeState(NetStateChange change, AtomName one, AtomName other) const;

    // Geometry.
    [[nodiscard]] Point ToLogical(Point onRoot) const;
    [[nodiscard]] Point ToRoot(Point onDesktop) const;
    /// In device pixels.
    [[nodiscard]] Rect WantedOnRoot() const;
    void CommitGeometry(Moment now);
    void Configure(const Rect& onRoot, std::uint16_t which) const;
    void OnConfigured(const X11Event& event);
    void AskForPlace();
    void OnPlaceAnswered(const xcb_translate_coordinates_reply_t* reply);
    void TakePlace(Point onRoot, Moment now);
    void TakeSize(Size size, Moment now);
    void InsistOnSize();
    void SettlePlace(Moment now);
    void TellContent();

    // Input.
    void OnPress(const xcb_button_press_event_t& press);
    void StartMoving();
    void OnRelease(const xcb_button_release_event_t& release);
    void OnMotion(const xcb_motion_notify_event_t& motion);
    void OnMessage(const xcb_client_message_event_t& message);
    void EndPress(Point pointerOnRoot);

    // Dragging.
    void AskWhoDrags();
    void AskWhetherAlive(const std::vector<std::uint32_t>& manager);
    void AskInDrag(xcb_window_t window, AtomName property, xcb_atom_t type,
                   std::function<void(const std::vector<std::uint32_t>&)> take);
    void HandDragOver();
    void CancelHandedOverDrag(Point pointer);
    void DragByOurselves(Point pointer);
    void DragTo(Point pointer);

    X11WindowSystem& system_;
    const Display& display_;
    NativeWindowOwner& owner_;
    const NativeWindowSettings settings_;
    /// Expires with the window: a handler may drop it.
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);

    // What the owner wants.
    Wanted wanted_;
    std::optional<std::string> newTitle_;
    std::string title_;
    std::uint32_t attributes_ = 0;
    float alpha_ = 1.0F;
    bool isShown_ = false;
    Rect changed_;
    bool iconWanted_ = false;

    // What the server has.
    ServerWindow id_;
    WindowHints hints_;
    WindowSurface surface_;
    EchoFilter<Point> place_;
    /// The size that was asked for last, the one that the window has, and whether the one that was
    /// asked for was asked for again since.
    Size sizeAsked_;
    Size actualSize_;
    bool insisted_ = false;
    /// The border that a manager without frames has given the window; places are asked for and
    /// reported outside of it.
    int border_ = 0;
    std::uint32_t knownAttributes_ = 0;
    float knownAlpha_ = 1.0F;
    bool hasNewContentForIcon_ = true;

    // Where it stands with the window manager.
    Mapping mapping_ = Mapping::Withdrawn;
    bool wantsToBeUp_ = false;
    bool awaitsMap_ = false;
    /// Questions about the state that a manager keeps of the window, not yet answered.
    int statesAsked_ = 0;
    bool answersMap_ = false;
    bool isManaged_ = false;
    bool isIconic_ = false;
    bool isHidden_ = false;
    bool stayIconic_ = false;
    xcb_window_t parent_;
    Moment withdrawnAtLatest_{};
    /// When a window that should be on the screen and is not is mapped anew.
    Moment mapAgainAt_{};
    bool isMapped_ = false;
    std::optional<Moment> repaintAt_;
    std::optional<Moment> sizeCheckAt_;
    std::optional<Moment> placeCheckAt_;
    /// Whether the place that the manager chose at the map was corrected.
    bool corrected_ = false;
    std::optional<PlaceQuestion> placeAsked_;
    bool duePosted_ = false;

    // The user's hand.
    bool isPressed_ = false;
    bool handedOver_ = false;
    xcb_timestamp_t pressTime_ = 0;
    /// Where the pointer and the content were on the root window at the press, and whether the
    /// pointer was moved since.
    Point pointerAtPress_;
    Point contentAtPress_;
    bool hasMoved_ = false;
    Point pointerTold_;
    std::optional<Drag> drag_;
    /// How many there have been.
    unsigned int drags_ = 0;
};

} // namespace kqu::platform
