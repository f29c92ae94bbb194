#include "platform/volumes/VolumeFunctions.h"

#include "platform/functions/Functions.h"
#include "tests/support/MadeUpVolumes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <optional>
#include <sys/statvfs.h>

namespace kqu::platform {
namespace {

using Block = std::array<std::byte, 80>;
using Info = std::array<std::byte, 126>;

constexpr std::uint32_t everything = 0xFFFF;

/// A machine with a boot volume and a second one, whose file system is the test's own.
class VolumeFunctionsTest : public testing::Test {
  protected:
    VolumeFunctionsTest() {
        tree_.Mount("8:1", "sda1", "/");
        tree_.Mount("8:17", "sdb1", "/media/My Disk");
        RegisterVolumeFunctions(table_, handles_, tree_.Root());
        second_ = Mounted().at(1).reference;
    }

    template <class F, class... Arguments>
    auto Call(Arguments... arguments) {
        return (*table_.Find<F>())(arguments...);
    }
    std::vector<MountedVolume> Mounted() { return Call<functions::MountedVolumes>(); }

    std::int32_t GetInfo(std::int32_t volume, std::uint32_t which, Info& info) {
        return Call<functions::FSGetVolumeInfo>(volume, 0U, nullptr, which, info.data(), nullptr,
                                                nullptr);
    }
    Block RootOf(std::int32_t volume) {
        Block block{};
        EXPECT_EQ(Call<functions::FSGetVolumeInfo>(volume, 0U, nullptr, 0U, nullptr, nullptr,
                                                   block.data()),
                  0);
        return block;
    }
    std::optional<Block> Entry(const Block& parent, std::u16string_view name) {
        Block block{};
        const auto status = Call<functions::FSMakeFSRefUnicode>(
            parent.data(), static_cast<std::uint32_t>(name.size()), name.data(), everything,
            block.data());
        EXPECT_EQ(status != 0, block == Block{}) << "a failure writes nothing, a success something";
        return status == 0 ? std::optional(block) : std::nullopt;
    }
    /// Nothing if the platform gives no path that fits.
    std::optional<std::string> Path(const Block& reference, std::uint32_t size = 1024) {
        std::vector<char> buffer(size, '?');
        if (Call<functions::FSRefMakePath>(reference.data(), buffer.data(), size) != 0)
            return std::nullopt;
        return std::string(buffer.data());
    }

    simulation::MadeUpVolumes tree_;
    Handles handles_;
    FunctionTable table_;
    std::int32_t second_ = 0;
};

TEST_F(VolumeFunctionsTest, TheNumberOfFilesIsWrittenOnlyIfInformationIsWanted) {
    Info untouched;
    untouched.fill(std::byte{0x5A});
    Info info = untouched;
    EXPECT_EQ(GetInfo(second_, 0, info), 0);
    EXPECT_NE(GetInfo(second_ - 1, everything, info), 0);
    EXPECT_EQ(info, untouched);

    EXPECT_EQ(GetInfo(second_, everything, info), 0);
    struct statvfs status {};
    ASSERT_EQ(statvfs(tree_.Root().c_str(), &status), 0);
    std::uint32_t files = 0;
    std::memcpy(&files, info.data() + 32, sizeof files);
    // Others may make and remove files meanwhile.
    EXPECT_NEAR(files, static_cast<double>(status.f_files - status.f_ffree), 10000);
    std::memcpy(info.data() + 32, untouched.data(), 4);
    EXPECT_EQ(info, untouched);

    // Its place has gone, as that of a device that was pulled out.
    std::filesystem::remove(tree_.Root() / "media/My Disk");
    EXPECT_NE(GetInfo(second_, everything, info), 0);
    EXPECT_EQ(info, untouched);
    EXPECT_EQ(GetInfo(second_, 0, info), 0);
}

TEST_F(VolumeFunctionsTest, VolumesAreFoundByIndexFromOneOn) {
    tree_.Label("sdb1", "Photos\\x20\xF0\x9F\x93\xB7");
    for (std::uint32_t index = 1; index <= 2; ++index) {
        std::int32_t number = 0;
        std::u16string name;
        EXPECT_EQ(Call<functions::FSGetVolumeInfo>(0, index, &number, 0U, nullptr, &name, nullptr),
                  0);
        EXPECT_EQ(number, index == 1 ? bootVolume : second_);
        EXPECT_EQ(name, index == 1 ? u"/" : u"Photos \U0001F4F7");
    }
    EXPECT_NE(Call<functions::FSGetVolumeInfo>(0, 3U, nullptr, 0U, nullptr, nullptr, nullptr), 0);
    const auto mounted = Mounted();
    ASSERT_EQ(mounted.size(), 2U);
    EXPECT_EQ(mounted[0].name, "/");
    EXPECT_EQ(mounted[1].name, "Photos \xF0\x9F\x93\xB7");
    EXPECT_EQ(mounted[1].mountPoint, "/media/My Disk");
}

TEST_F(VolumeFunctionsTest, TheDiskIsHandedOverAsATextToRelease) {
    std::int32_t text = 77;
    EXPECT_NE(Call<functions::FSCopyDiskIDForVolume>(second_ - 1, &text), 0);
    EXPECT_EQ(text, 77);
    EXPECT_EQ(Call<functions::FSCopyDiskIDForVolume>(second_, &text), 0);
    ASSERT_NE(handles_.Text(text), nullptr);
    EXPECT_EQ(*handles_.Text(text), "sdb1");
    handles_.Release(text);
    EXPECT_EQ(handles_.Text(text), nullptr);
    tree_.UnmountAll();
    for (const std::int32_t gone : {bootVolume, second_})
        EXPECT_NE(Call<functions::FSCopyDiskIDForVolume>(gone, &text), 0) << gone;
}

TEST_F(VolumeFunctionsTest, ReferencesLeadFromTheRootToAFileByItsNames) {
    const std::string camera = "\xF0\x9F\x93\xB7";
    tree_.Write("media/My Disk/" + camera + "/ä", "");
    tree_.Link("media/My Disk/dangling", "/nowhere");
    const Block root = RootOf(second_);
    EXPECT_EQ(Path(RootOf(bootVolume)), "/");
    EXPECT_EQ(Path(root), "/media/My Disk");
    const auto folder = Entry(root, u"\U0001F4F7");
    ASSERT_TRUE(folder);
    const auto file = Entry(*folder, u"ä");
    ASSERT_TRUE(file);
    EXPECT_EQ(Path(*file), "/media/My Disk/" + camera + "/ä");
    // A link is an entry whatever it points to.
    EXPECT_TRUE(Entry(root, u"dangling"));
    EXPECT_EQ(Path(*Entry(RootOf(bootVolume), u"media")), "/media");

    using namespace std::string_view_literals;
    for (const auto name : {u""sv, u"."sv, u".."sv, u"missing"sv, u"a/b"sv, u"/"sv, u"\xD83D"sv,
                            u"dangling\0x"sv, std::u16string_view(u"\U0001F4F7", 1)})
        EXPECT_FALSE(Entry(root, name)) << std::string(name.begin(), name.end());
    EXPECT_FALSE(Entry(*file, u"below a file"));
    EXPECT_FALSE(Entry(Block{}, u"media"));
}

TEST_F(VolumeFunctionsTest, APathComesWholeOrNotAtAll) {
    const Block root = RootOf(second_);
    const auto length = static_cast<std::uint32_t>(std::strlen("/media/My Disk"));
    EXPECT_EQ(Path(root, length + 1), "/media/My Disk");
    EXPECT_EQ(Path(root, length), std::nullopt);
    EXPECT_EQ(Path(root, 0), std::nullopt);
    Block garbage;
    garbage.fill(std::byte{0xFF});
    EXPECT_EQ(Path(garbage), std::nullopt);
    EXPECT_EQ(Path(Block{}), std::nullopt);

    tree_.Write("file", "");
    const auto file = Entry(RootOf(bootVolume), u"file");
    ASSERT_TRUE(file);
    EXPECT_EQ(Path(*file), "/file");
    std::filesystem::remove(tree_.Root() / "file");
    EXPECT_EQ(Path(*file), std::nullopt);

    // References are for use soon; a forgotten one names nothing, and never another file.
    for (int i = 0; i < 256; ++i)
        static_cast<void>(RootOf(bootVolume));
    EXPECT_EQ(Path(root), std::nullopt);
}

} // namespace
} // namespace kqu::platform
