#include "platform/volumes/VolumeFunctions.h"

#include "platform/functions/Functions.h"
#include "platform/volumes/Volumes.h"
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
        tree.Mount("8:1", "sda1", "/");
        tree.Mount("8:17", "sdb1", "/media/My Disk");
        RegisterVolumeFunctions(table, handles, tree.Root());
        second = (*table.Find<functions::MountedVolumes>())().at(1).reference;
    }

    template <class F, class... Arguments>
    auto Call(Arguments... arguments) {
        return (*table.Find<F>())(arguments...);
    }
    std::int32_t GetInfo(std::int32_t volume, std::uint32_t which, std::byte* info,
                         std::byte* root = nullptr) {
        return Call<functions::FSGetVolumeInfo>(volume, 0U, nullptr, which, info, nullptr, root);
    }
    Block RootOf(std::int32_t volume) {
        Block block{};
        EXPECT_EQ(GetInfo(volume, 0, nullptr, block.data()), 0);
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
    /// "-" if the platform gives no path that fits.
    std::string Path(const Block& reference, std::uint32_t size = 1024) {
        std::vector<char> buffer(size, '?');
        const auto status = Call<functions::FSRefMakePath>(reference.data(), buffer.data(), size);
        return status == 0 ? buffer.data() : "-";
    }

    simulation::MadeUpVolumes tree;
    Handles handles;
    FunctionTable table;
    std::int32_t second = 0;
};

TEST_F(VolumeFunctionsTest, TheNumberOfFilesIsWrittenOnlyIfInformationIsWanted) {
    Info untouched;
    untouched.fill(std::byte{0x5A});
    Info info = untouched;
    EXPECT_EQ(GetInfo(second, 0, info.data()), 0);
    EXPECT_NE(GetInfo(second - 1, everything, info.data()), 0);
    EXPECT_EQ(info, untouched);
    EXPECT_EQ(GetInfo(second, everything, info.data()), 0);
    struct statvfs status {};
    ASSERT_EQ(statvfs(tree.Root().c_str(), &status), 0);
    std::uint32_t files = 0;
    std::memcpy(&files, info.data() + 32, sizeof files);
    // Others may make and remove files meanwhile.
    EXPECT_NEAR(files, FilesInUse(status), 10000);
    std::memcpy(info.data() + 32, untouched.data(), 4);
    EXPECT_EQ(info, untouched);
    // Its place has gone, as that of a device that was pulled out.
    std::filesystem::remove(tree.Root() / "media/My Disk");
    EXPECT_NE(GetInfo(second, everything, info.data()), 0);
    EXPECT_EQ(GetInfo(second, 0, info.data()), 0);
    EXPECT_EQ(info, untouched);
}

TEST_F(VolumeFunctionsTest, VolumesAreFoundByIndexFromOneOn) {
    tree.Label("sdb1", "Photos\\x20\xF0\x9F\x93\xB7");
    const auto info = *table.Find<functions::FSGetVolumeInfo>();
    std::int32_t number = 0;
    std::u16string name;
    EXPECT_EQ(info(0, 1, &number, 0, nullptr, &name, nullptr), 0);
    EXPECT_TRUE(number == bootVolume && name == u"/");
    EXPECT_EQ(info(0, 2, &number, 0, nullptr, &name, nullptr), 0);
    EXPECT_TRUE(number == second && name == u"Photos \U0001F4F7");
    EXPECT_NE(info(0, 3, nullptr, 0, nullptr, nullptr, nullptr), 0);
    EXPECT_NE(Call<functions::FSCopyDiskIDForVolume>(second - 1, &number), 0);
}

TEST_F(VolumeFunctionsTest, ReferencesLeadFromTheRootToAFileByItsNames) {
    const std::string place = "/media/My Disk/\xF0\x9F\x93\xB7/ä";
    tree.Write(place.substr(1), "");
    tree.Link("media/My Disk/dangling", "/nowhere");
    const Block root = RootOf(second);
    const Block file = Entry(Entry(root, u"\U0001F4F7").value(), u"ä").value();
    EXPECT_EQ(Path(file), place);
    // A link is an entry whatever it points to.
    EXPECT_TRUE(Entry(root, u"dangling"));
    using namespace std::string_view_literals;
    for (const auto name : {u""sv, u"."sv, u".."sv, u"missing"sv, u"a/b"sv, u"/"sv, u"\xD83D"sv,
                            u"dangling\0x"sv, std::u16string_view(u"\U0001F4F7", 1)})
        EXPECT_FALSE(Entry(root, name)) << std::string(name.begin(), name.end());
    EXPECT_FALSE(Entry(file, u"below a file") || Entry(Block{}, u"media"));
    // A path comes whole or not at all.
    const auto length = static_cast<std::uint32_t>(std::strlen("/media/My Disk"));
    EXPECT_EQ(Path(root, length + 1), "/media/My Disk");
    Block garbage;
    garbage.fill(std::byte{0xFF});
    for (const auto& [reference, size] :
         {std::pair(root, length), {root, 0U}, {garbage, 99U}, {Block{}, 99U}})
        EXPECT_EQ(Path(reference, size), "-") << size;
    std::filesystem::remove(tree.Root() / place.substr(1));
    EXPECT_EQ(Path(file), "-");
    // References are for use soon; a forgotten one names nothing, and never another file.
    for (int i = 0; i < 256; ++i)
        static_cast<void>(RootOf(bootVolume));
    EXPECT_EQ(Path(root), "-");
}

} // namespace
} // namespace kqu::platform
