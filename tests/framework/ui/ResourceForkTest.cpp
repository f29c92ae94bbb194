#include "framework/ui/ResourceFork.h"

#include "framework/ui/Picture.h"

#include "platform/interfaces/DeviceScale.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

TEST(ResourceFork, HoldsAllOfTheArtwork) {
    const ResourceFork fork;
    EXPECT_EQ(fork.GetPicture(167), nullptr);
    for (int id = 168; id <= 188; ++id) {
        ASSERT_NE(fork.GetPicture(id), nullptr) << id;
        const int width = fork.GetPicture(id)->Width();
        for (const int scale : {3, 2, 1}) {
            platform::DeviceScale() = scale;
            const Ref<Picture> picture = fork.GetPicture(id);
            EXPECT_EQ(std::pair(picture->Width(), picture->Scale()), std::pair(width, scale)) << id;
        }
    }
}

} // namespace
} // namespace kqu
