#pragma once

#include "framework/ui/Colour.h"

/// The numbers by which the rows of the list are laid out. Pixels; places are relative to the
/// row's top and the list's left, and the place of a line of text is its baseline.
namespace kqu::rowlayout {

inline constexpr int textSize = 11;

// Stripes and the line on top of each.
inline constexpr Colour evenStripe = RGB(255, 255, 255);
inline constexpr Colour oddStripe = RGB(241, 245, 250);
/// A stripe reaches this much further than all rows above it and itself are high.
inline constexpr int stripeOverlap = 1;
inline constexpr int separatorLeft = 2;
inline constexpr int separatorHeight = 1;
/// How much longer the line is than the panel is wide.
inline constexpr int separatorExcess = 1;

// The icon, and the slot that it takes from the texts.
inline constexpr int iconLeft = 10;
inline constexpr int iconTop = 10;
inline constexpr int slotGap = 10;

// Lines of text.
inline constexpr Colour textColour = RGB(5, 5, 5);
/// Left of the texts and of the bar, before the slot.
inline constexpr int textLeft = 10;
inline constexpr int topLine = 18;
inline constexpr int headingLine = 50;
inline constexpr int statusLine = 65;
/// What a line may be narrower than the list. The text's left is not taken off: a long line may run
/// past the right edge.
inline constexpr int lineMargin = 30;
inline constexpr int defragHeadingMargin = 75;
/// What a destination may be narrower than the panel, beside slot and label.
inline constexpr int destinationMargin = 64;
/// A label takes that much less from its destination than it is wide.
inline constexpr double labelOverlap = 7.0;

// The bar and its percentage.
inline constexpr int barTop = 25;
inline constexpr int barMargins = 20;
inline constexpr int percentRight = 10;

// The badge.
inline constexpr Colour badgeColour = RGB(101, 124, 157);
inline constexpr int badgeLeft = 20;
inline constexpr int badgeBottom = 10;

} // namespace kqu::rowlayout
