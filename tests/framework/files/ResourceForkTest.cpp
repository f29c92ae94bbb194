#include "framework/files/ResourceFork.h"

#include "framework/ui/Picture.h"
#include "tests/support/Artwork.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

TEST(ResourceFork, HoldsAllOfTheArtwork) {
    const ResourceFork fork;
    for (int id = 168; id <= 188; ++id)
        EXPECT_NE(fork.GetPicture(id), nullptr) << id;
    EXPECT_EQ(fork.GetPicture(167), nullptr);
    EXPECT_EQ(fork.GetPicture(189), nullptr);
    // Slices are read up to the tick's last column.
    EXPECT_GE(fork.GetPicture(171)->Width(), 47);
    EXPECT_EQ(fork.GetPicture(172)->Height(), fork.GetPicture(171)->Height());
    // Icons and their masks belong together.
    for (int id = 173; id <= 187; id += 2) {
        EXPECT_EQ(fork.GetPicture(id)->Width(), fork.GetPicture(id + 1)->Width()) << id;
        EXPECT_EQ(fork.GetPicture(id)->Height(), fork.GetPicture(id + 1)->Height()) << id;
    }
}

TEST(ResourceFork, TakesOtherFilesAndBringsItsOwnBack) {
    ResourceFork fork;
    const auto file = simulation::Png(3, 2, [](int x, int y) { return RGB(x * 100, y * 50, 7); });
    fork.Set(168, file);
    const Ref<Picture> picture = fork.GetPicture(168);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->Graphics().Pixel(2, 1), RGB(200, 50, 7));
    // A file that breaks off, or is none, is no picture.
    for (const std::size_t length : {std::size_t{0}, std::size_t{5}, file.size() / 2}) {
        fork.Set(170, std::span(file).first(length));
        EXPECT_EQ(fork.GetPicture(170), nullptr) << length;
    }
    fork.Restore();
    EXPECT_NE(fork.GetPicture(168)->Width(), 3);
}

} // namespace
} // namespace kqu
