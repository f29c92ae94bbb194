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

    void SetTitle(std::string_view title) override { title_ = title; }
    void SetPosition(Point onDesktop) override { MoveWanted(onDesktop); }
    void SetSize(Size size) override;
    void ChangeAttributes(std::uint32_t set, std::uint32_t clear) override {
        attributes_ = (attributes_ & ~clear) | set;
    }
    void SetAlpha(float alpha) override { alpha_ = alpha; }
    void Show() override { isShown_ = true; }
    void Hide() override { isShown_ = false; }
    [[nodiscard]] bool IsCollapsed() override { return IsMinimised(); }
    void UpdateDockTile() override { iconWanted_ = true; }
    void BeginDrag(Point start) override;
    void Present(const Rect& changed) override { changed_ = Union(changed_, changed); }
    void Commit() override;

    [[nodiscard]] xcb_window_t Id() const { return id_; }
    /// One event of this window, from the event loop.
    void Handle(const X11Event& event);
    void ScreensChanged();
    void ScaleChanged();
    /// When HandleDue is to be called; the end of time if nothing is due.
    [[nodiscard]] Moment Due() const;
    /// True, once, if that moment has come; HandleDue then has to follow.
    [[nodiscard]] bool TakeDue(Moment now);
    void HandleDue();

  private:
    enum class Mapping { Withdrawn, Up, Withdrawing };
    /// The source of a message to the manager (EWMH): a normal application.
    static constexpr std::uint32_t fromApplication = 1;
    /// The directions of a _NET_WM_MOVERESIZE message.
    enum class MoveResize : std::uint32_t { ByPointer = 8, Cancel = 11 };
    /// The actions of a _NET_WM_STATE message (EWMH).
    enum class NetStateChange : std::uint32_t { Remove, Add };

    /// Who moves the window by its content.
    enum class Drag { Nobody, NotKnownYet, Ourselves };
    using Words = std::vector<std::uint32_t>;

    /// Asks the server; the answer is dropped with the window.
    void Ask(unsigned int sequence, Questions::Answer answer);
    [[nodiscard]] bool IsMinimised() const { return isIconic_ || isHidden_; }
    [[nodiscard]] bool WantsToBeUp() const { return isShown_ && alpha_ > 0.0F; }

    // Changes that wait for Commit.
    [[nodiscard]] bool NeedsPixels() const;
    void CommitProperties();
    void RebuildSurface(Size extent);
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
    void OnNetState(const Words& states);
    void ChangeState(NetStateChange change, AtomName one, xcb_atom_t other = 0) const;

    // Geometry.
    [[nodiscard]] Point ToLogical(Point onRoot) const;
    [[nodiscard]] Point ToRoot(Point onDesktop) const;
    /// In device pixels.
    [[nodiscard]] Rect WantedOnRoot() const;
    /// True if that was another place.
    bool MoveWanted(Point onDesktop);
    void CommitGeometry(Moment now);
    void Configure(const Rect& onRoot, unsigned int which) const;
    void OnConfigured(const X11Event& event);
    void AskForPlace();
    void OnPlaceAnswered(Point onRoot);
    void TakePlace(Point onRoot, Moment now);
    void TakeSize(Size size, Moment now);
    void InsistOnSize();

    // Input.
    void OnPress(const xcb_button_press_event_t& press);
    void StartMoving();
    void OnRelease(const xcb_button_release_event_t& release);
    void OnMotion(const xcb_motion_notify_event_t& motion);
    void OnMessage(const xcb_client_message_event_t& message);
    void EndPress(Point pointerOnRoot);

    // Dragging.
    void AskWhoDrags();
    void AskInDrag(xcb_window_t window, AtomName property, xcb_atom_t type,
                   std::function<void(const Words&)> take);
    void HandDragOver();
    void SendMoveResize(Point pointer, MoveResize direction) const;
    void DragByOurselves(Point pointer);
    void DragTo(Point pointer);

    X11WindowSystem& system_;
    const Display& display_;
    NativeWindowOwner& owner_;
    const NativeWindowSettings settings_;
    /// Expires with the window: a handler may drop it.
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);

    // What the owner wants, and what the server knows of that.
    Rect wanted_;
    std::string title_;
    std::string knownTitle_;
    std::uint32_t attributes_ = 0;
    std::uint32_t knownAttributes_ = 0;
    float alpha_ = 1.0F;
    float knownAlpha_ = 1.0F;
    bool isShown_ = false;
    Rect changed_;
    bool iconWanted_ = false;
    bool hasNewContentForIcon_ = true;

    // What the server has.
    const xcb_window_t id_;
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

    // Where it stands with the window manager.
    Mapping mapping_ = Mapping::Withdrawn;
    bool isMapped_ = false;
    bool awaitsMap_ = false;
    /// How many places, at most, the manager may still give the window in answer to the map: its
    /// own choice, and one after it was asked once more.
    int mapAnswers_ = 0;
    bool isManaged_ = false;
    bool isIconic_ = false;
    bool isHidden_ = false;
    bool stayIconic_ = false;
    xcb_window_t parent_;
    /// The number of the last question for the place; answers to former ones do not count.
    unsigned int placeQuestion_ = 0;
    /// When a manager that has neither mapped the window nor let go of it is waited for no longer.
    Moment managerDueAt_{};
    std::optional<Moment> repaintAt_;
    std::optional<Moment> sizeCheckAt_;
    std::optional<Moment> placeCheckAt_;
    bool duePosted_ = false;

    // The user's hand.
    bool isPressed_ = false;
    xcb_timestamp_t pressTime_ = 0;
    /// Where the pointer and the content were on the root window at the press, and whether the
    /// pointer was moved since.
    Point pointerAtPress_;
    Point contentAtPress_;
    bool hasMoved_ = false;
    Point pointerTold_;
    Drag drag_ = Drag::Nobody;
    /// How many there have been.
    unsigned int drags_ = 0;
    bool handedOver_ = false;
};

} // namespace kqu::platform
