#include "framework/files/FolderItem.h"
#include "framework/files/KnownFolders.h"
#include "framework/files/Streams.h"
#include "tests/support/MadeUpTree.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace kqu {
namespace {

std::string HomeOf(uid_t user) {
    const passwd* account = getpwuid(user);
    return account != nullptr ? account->pw_dir : "";
}

class FolderItemTest : public testing::Test {
  protected:
    FolderItemTest() { FolderItem::SetRoot(tree.Root()); }
    ~FolderItemTest() override { FolderItem::SetRoot("/"); }
    static Ref<FolderItem> Item(const std::string& path) {
        return GetFolderItem(path, PathForm::Absolute);
    }
    simulation::MadeUpTree tree;
};

TEST_F(FolderItemTest, PathsResolveUnderTheRootInBothForms) {
    tree.Write("A B/C/d", "x");
    tree.Link("dangling", "nowhere");
    EXPECT_FALSE(Item("/dangling")->Exists());
    const auto item = GetFolderItem("/A\\ B/C/d", PathForm::Shell);
    EXPECT_TRUE(item->Exists());
    EXPECT_EQ(item->AbsolutePath(), "/A B/C/d");
    EXPECT_EQ(item->Name(), "d");
    EXPECT_TRUE(item->Parent()->Child("d")->Exists());
    EXPECT_FALSE(Item("/A\\ B/C/d")->Exists());
    EXPECT_TRUE(Item("/")->Child("A B")->Child("C")->Child("d")->Exists());
    EXPECT_EQ(Item("//A B/./C//")->AbsolutePath(), "/A B/C");
    EXPECT_FALSE(Item("/dangling")->Exists());
    for (const auto& none : {Item("/")->Parent(), Item(""), Item("relative"),
                             Item("/A B")->Child("/etc"), Item("/A B")->Child("")})
        EXPECT_EQ(none, nullptr);
}

TEST_F(FolderItemTest, FilesAreReadAndReplacedAndFoldersNeverOpen) {
    const auto file = Item("/file");
    EXPECT_EQ(file->OpenAsTextFile(), nullptr);
    const std::string text = std::string("one\rtwo\0three", 13) + std::string(200000, 'x');
    const auto out = file->CreateTextFile();
    out->Write(text);
    out->Close();
    EXPECT_EQ(file->OpenAsTextFile()->ReadAll(), text);
    file->Delete();
    EXPECT_FALSE(file->Exists());
    EXPECT_EQ(Item("/")->OpenAsTextFile(), nullptr);
    EXPECT_EQ(Item("/absent/x")->CreateTextFile(), nullptr);
}

TEST_F(FolderItemTest, FilesWithoutAnEndOrAWriterOrMeasureHoldNobody) {
    ASSERT_EQ(mkfifo((tree.Root() / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(Item("/pipe")->OpenAsTextFile()->ReadAll(), "");
    for (const std::size_t beyond : {0U, 1U}) {
        tree.Write("file", std::string((1U << 20U) + beyond, 'x'));
        EXPECT_EQ(Item("/file")->OpenAsTextFile()->ReadAll().empty(), beyond == 1);
    }
}

TEST_F(FolderItemTest, ALinkIsReplacedByANewFileAndNeverFollowed) {
    tree.Write("target", "kept");
    tree.Link("link", "target");
    tree.Link("dangling", "nowhere");
    EXPECT_FALSE(Item("/dangling")->Exists());
    for (const char* path : {"/link", "/dangling"}) {
        Item(path)->CreateTextFile()->Write("new");
        EXPECT_EQ(Item(path)->OpenAsTextFile()->ReadAll(), "new");
    }
    EXPECT_EQ(Item("/target")->OpenAsTextFile()->ReadAll(), "kept");
    EXPECT_FALSE(Item("/nowhere")->Exists());
}

TEST_F(FolderItemTest, PreferencesFolderFollowsTheBaseDirectoryRules) {
    const auto folder = [](const char* config) {
        setenv("XDG_CONFIG_HOME", config, 1);
        return PreferencesFolder()->AbsolutePath();
    };
    setenv("HOME", "/home/somebody", 1);
    EXPECT_EQ(folder("/elsewhere"), "/elsewhere");
    EXPECT_EQ(folder("relative/is/ignored"), "/home/somebody/.config");
    EXPECT_EQ(folder(""), "/home/somebody/.config");
    unsetenv("HOME");
    EXPECT_EQ(folder(""), HomeOf(getuid()) + "/.config");
    if (getuid() != 0) {
        std::puts("NOT RUN: only root can become another user");
        return;
    }
    constexpr uid_t nobody = 65534;
    setenv("HOME", "/elsewhere", 1);
    const auto becomeNobody = [&] {
        const bool changed = setresuid(nobody, nobody, nobody) == 0;
        _exit(changed && folder("/elsewhere") == HomeOf(nobody) + "/.config" ? 0 : 1);
    };
    EXPECT_EXIT(becomeNobody(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace kqu
