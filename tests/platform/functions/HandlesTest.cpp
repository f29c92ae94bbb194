#include "platform/functions/Handles.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace kqu::platform {
namespace {

TEST(HandlesTest, EachHandleStandsForOneThingOfOneKind) {
    Handles handles;
    const auto text = handles.AddText("sda1");
    const auto same = handles.AddText("sda1");
    const auto unowned = handles.UnownedText("AC Power");
    const auto blob = handles.AddBlob("bytes");
    const auto stream = handles.AddStream(CommandStream(::popen("true", "re")));
    EXPECT_EQ((std::set{0, text, same, unowned, blob, stream}).size(), 6U);
    EXPECT_LT(stream, 100);
    EXPECT_EQ(handles.UnownedText("AC Power"), unowned);

    ASSERT_NE(handles.Text(text), nullptr);
    EXPECT_EQ(*handles.Text(text), "sda1");
    EXPECT_EQ(*handles.Text(unowned), "AC Power");
    EXPECT_EQ(*handles.Blob(blob), "bytes");
    EXPECT_NE(handles.Stream(stream), nullptr);
    for (const auto other : {0, -1, blob, stream, 1000})
        EXPECT_EQ(handles.Text(other), nullptr) << other;
    for (const auto other : {0, -1, text, unowned, stream, 1000})
        EXPECT_EQ(handles.Blob(other), nullptr) << other;
    for (const auto other : {0, -1, text, unowned, blob, 1000})
        EXPECT_EQ(handles.Stream(other), nullptr) << other;
    EXPECT_EQ(handles.AddStream(nullptr), 0);
}

TEST(HandlesTest, ReleasingWhatIsNotOursToReleaseIsHarmless) {
    Handles handles;
    const auto unowned = handles.UnownedText("AC Power");
    const auto stream = handles.AddStream(CommandStream(::popen("true", "re")));
    const auto first = handles.AddText("first");
    handles.Release(first);
    // Whatever comes next must not be hit by a second release of the first.
    const auto second = handles.AddText("second");
    for (const auto handle : {first, unowned, stream, 0, -1, 1000})
        handles.Release(handle);
    EXPECT_EQ(handles.Text(first), nullptr);
    EXPECT_EQ(*handles.Text(second), "second");
    EXPECT_EQ(*handles.Text(unowned), "AC Power");
    EXPECT_NE(handles.Stream(stream), nullptr);

    EXPECT_EQ(handles.TakeStream(second), nullptr);
    EXPECT_NE(handles.TakeStream(stream), nullptr);
    EXPECT_EQ(handles.TakeStream(stream), nullptr);
}

} // namespace
} // namespace kqu::platform
