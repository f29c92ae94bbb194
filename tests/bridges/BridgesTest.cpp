#include "bridges/VolumeBridges.h"
#include "framework/files/KnownFolders.h"
#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kqu {
namespace {

class FileBridgesTest : public testing::Test {
  protected:
    FileBridgesTest() {
        machine.functions.Set<functions::lstat>(
            [this](const std::string& path, std::byte* record, std::size_t size) {
                EXPECT_EQ(size, 88U);
                const auto found = owners.find(path);
                if (found == owners.end())
                    return -1;
                std::memcpy(record + 12, &found->second, sizeof found->second);
                return 0;
            });
        const auto make = *machine.functions.Find<functions::FSMakeFSRefUnicode>();
        machine.functions.Set<functions::FSMakeFSRefUnicode>(
            [this, make](const std::byte* parent, std::uint32_t length, const char16_t* name,
                         std::uint32_t hint, std::byte* reference) {
                EXPECT_EQ(hint, 0xFFFFU);
                namesLookedUp.emplace_back(name, length);
                return make(parent, length, name, hint, reference);
            });
    }
    Ref<FolderItem> Item(const std::string& path) {
        return GetFolderItem(path, PathForm::Absolute);
    }
    std::string PathOf(const Ref<MemoryBlock>& reference) {
        std::array<char, 1024> path{};
        EXPECT_EQ((*machine.functions.Find<functions::FSRefMakePath>())(reference->Data(),
                                                                        path.data(), path.size()),
                  0);
        return path.data();
    }

    simulation::SimulatedMachine machine;
    std::map<std::string, std::uint32_t> owners;
    std::vector<std::u16string> namesLookedUp;
};

TEST_F(FileBridgesTest, TheOwnerOfAnItemIsThatOfItsPathOrMarkedAsFailed) {
    machine.tree.Write("a/file", "");
    owners["/a/file"] = 1000;
    owners["/media/My Disk"] = 7;
    EXPECT_EQ(machine.app->GetLStat(Item("/a/file"))->UInt32Value(12), 1000U);
    EXPECT_EQ(machine.app->GetLStat(Volume(1))->UInt32Value(12), 7U);
    EXPECT_EQ(machine.app->GetLStat("/missing")->UInt32Value(12), 0U);
    // Without a reference there is nothing to be asked about.
    EXPECT_THROW(static_cast<void>(machine.app->GetLStat(Item("/missing"))), NilObjectException);

    machine.functions.Set<functions::FSRefMakePath>(
        [](const std::byte*, char*, std::uint32_t size) { return size == 1024 ? -1 : 0; });
    const auto failed = machine.app->GetLStat(Item("/a/file"));
    EXPECT_EQ(failed->Size(), 80U);
    for (std::size_t offset = 0; offset < 80; offset += 4)
        EXPECT_EQ(failed->Int32Value(offset), offset == 12 ? -1 : 0);
}

TEST_F(FileBridgesTest, AnItemIsReachedFromItsVolumeByName) {
    const std::string camera = "\xF0\x9F\x93\xB7";
    machine.tree.Write(camera + "/ä", "");
    const auto reference = machine.app->FolderItemToFSRef(Item("/" + camera + "/ä"));
    EXPECT_EQ(PathOf(reference), "/" + camera + "/ä");
    EXPECT_EQ(namesLookedUp, (std::vector<std::u16string>{u"\U0001F4F7", u"ä"}));

    namesLookedUp.clear();
    EXPECT_EQ(PathOf(machine.app->FolderItemToFSRef(Item("/"))), "/");
    EXPECT_EQ(PathOf(machine.app->FolderItemToFSRef(Volume(1))), "/media/My Disk");
    EXPECT_TRUE(namesLookedUp.empty());

    EXPECT_EQ(machine.app->FolderItemToFSRef(nullptr), nullptr);
    EXPECT_EQ(machine.app->FolderItemToFSRef(Item("/missing/below")), nullptr);
    EXPECT_EQ(namesLookedUp, std::vector<std::u16string>{u"missing"});
}

class VolumeBridgesTest : public testing::Test {
  protected:
    Ref<MemoryBlock> BlockOf(std::int32_t handle) {
        auto block = std::make_shared<MemoryBlock>(4);
        block->SetInt32Value(0, handle);
        return block;
    }

    simulation::SimulatedMachine machine;
};

TEST_F(VolumeBridgesTest, ATextComesWholeOrNotAtAllAndIsReleasedOnlyThen) {
    for (const bool release : {true, false})
        for (const std::size_t length : {4U, 1023U, 1024U}) {
            const std::string text(length, 'x');
            const bool comes = length < 1024;
            const auto handle = machine.handles.AddText(text);
            EXPECT_EQ(CFStrRefToStr(BlockOf(handle), release), comes ? text : "") << length;
            EXPECT_EQ(machine.handles.Text(handle) == nullptr, comes && release) << length;
        }
    for (const std::int32_t none : {0, -1, 4711})
        EXPECT_EQ(CFStrRefToStr(BlockOf(none), true), "");
}

TEST_F(VolumeBridgesTest, TheNumberOfFilesIsWrittenOnlyIfInformationIsWanted) {
    const auto info = *machine.functions.Find<functions::FSGetVolumeInfo>();
    const std::int32_t photos = Volume(1)->MacVRefNum();
    const auto numberWritten = [&](std::int32_t volume, std::uint32_t which) {
        std::array<std::byte, 126> block{};
        const bool isDone = info(volume, 0, nullptr, which, block.data(), nullptr, nullptr) == 0;
        std::uint32_t files = 0;
        std::memcpy(&files, block.data() + 32, sizeof files);
        std::fill_n(block.begin() + 32, sizeof files, std::byte{0});
        EXPECT_EQ(block, (std::array<std::byte, 126>{})) << "nothing else is written";
        return std::pair(isDone, files > 0);
    };
    EXPECT_EQ(numberWritten(photos, 0xFFFF), std::pair(true, true));
    EXPECT_EQ(numberWritten(photos, 0), std::pair(true, false));
    EXPECT_EQ(numberWritten(4711, 0xFFFF), std::pair(false, false));
    // Its place has gone, as that of a device that was pulled out.
    std::filesystem::remove(machine.tree.Root() / "media/My Disk");
    EXPECT_EQ(numberWritten(photos, 0xFFFF), std::pair(false, false));
}

} // namespace
} // namespace kqu
