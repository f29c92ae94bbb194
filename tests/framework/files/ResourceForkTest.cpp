#include "framework/files/ResourceFork.h"

#include "framework/ui/Picture.h"

#include "platform/interfaces/DeviceScale.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

TEST(ResourceFork, HoldsAllOfTheArtwork) {
    const ResourceFork fork;
    for (int id = 168; id <= 188; ++id)
        EXPECT_NE(fork.GetPicture(id), nullptr) << id;
    EXPECT_EQ(fork.GetPicture(167), nullptr);
    EXPECT_EQ(fork.GetPicture(189), nullptr);
    // The same pictures at each scale.
    for (int id = 168; id <= 188; ++id) {
        const int width = fork.GetPicture(id)->Width();
        for (const int scale : {3, 2, 1}) {
            platform::DeviceScale() = scale;
            const Ref<Picture> picture = fork.GetPicture(id);
            ASSERT_NE(picture, nullptr) << id;
            EXPECT_EQ(std::pair(picture->Width(), picture->Scale()), std::pair(width, scale)) << id;
        }
    }
    // Slices are read up to the tick's last column.
    EXPECT_GE(fork.GetPicture(171)->Width(), 47);
    EXPECT_EQ(fork.GetPicture(172)->Height(), fork.GetPicture(171)->Height());
    // Icons and their masks belong together.
    for (int id = 173; id <= 187; id += 2) {
        EXPECT_EQ(fork.GetPicture(id)->Width(), fork.GetPicture(id + 1)->Width()) << id;
        EXPECT_EQ(fork.GetPicture(id)->Height(), fork.GetPicture(id + 1)->Height()) << id;
    }
}

} // namespace
} // namespace kqu
