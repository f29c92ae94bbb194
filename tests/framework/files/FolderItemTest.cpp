#include "framework/files/FolderItem.h"
#include "framework/corefoundation/CFBundle.h"
#include "framework/corefoundation/CFString.h"
#include "framework/files/BinaryStream.h"
#include "framework/files/SpecialFolder.h"
#include "framework/files/TextInputStream.h"
#include "framework/files/TextOutputStream.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace kqu {
namespace {

std::string HomeOf(uid_t user) {
    const passwd* account = getpwuid(user);
    return account != nullptr ? account->pw_dir : "";
}

class FolderItemTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kqu-files-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root = pattern;
        FolderItem::SetRoot(root);
    }
    void TearDown() override {
        FolderItem::SetRoot("/");
        std::filesystem::remove_all(root);
    }
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(root / name, std::ios::binary) << text;
    }
    std::filesystem::path root;
};

TEST_F(FolderItemTest, PathsResolveUnderTheRootInBothForms) {
    std::filesystem::create_directories(root / "A B/C");
    Write("A B/C/d", "x");
    const auto item = GetFolderItem("/A\\ B/C/d", PathForm::Shell);
    EXPECT_TRUE(item->Exists());
    EXPECT_EQ(item->AbsolutePath(), "/A B/C/d");
    EXPECT_EQ(item->Name(), "d");
    EXPECT_TRUE(item->Parent()->IsFolder());
    EXPECT_FALSE(GetFolderItem("/A\\ B/C/d", PathForm::Absolute)->Exists());
    EXPECT_TRUE(
        GetFolderItem("/", PathForm::Shell)->Child("A B")->Child("C")->Child("d")->Exists());
    EXPECT_EQ(GetFolderItem("/", PathForm::Absolute)->Parent(), nullptr);
    EXPECT_EQ(GetFolderItem("", PathForm::Absolute), nullptr);
    EXPECT_EQ(GetFolderItem("relative", PathForm::Absolute), nullptr);
    EXPECT_EQ(GetFolderItem("//A B/./C//", PathForm::Absolute)->AbsolutePath(), "/A B/C");
    EXPECT_EQ(GetFolderItem("/A B", PathForm::Absolute)->Child("/etc"), nullptr);
    EXPECT_EQ(GetFolderItem("/A B", PathForm::Absolute)->Child(""), nullptr);
    std::filesystem::create_symlink("nowhere", root / "dangling");
    EXPECT_TRUE(GetFolderItem("/dangling", PathForm::Absolute)->Exists());
}

TEST_F(FolderItemTest, FilesAreReadAndReplacedAndFoldersNeverOpen) {
    const auto file = GetFolderItem("/file", PathForm::Absolute);
    EXPECT_EQ(file->OpenAsTextFile(), nullptr);
    const std::string text = std::string("one\rtwo\0three", 13) + std::string(200000, 'x');
    const auto out = file->CreateTextFile();
    out->Write(text);
    out->Close();
    EXPECT_EQ(file->OpenAsTextFile()->ReadAll(), text);
    const auto binary = file->OpenAsBinaryFile();
    EXPECT_EQ(binary->Length(), text.size());
    EXPECT_EQ(binary->Read(3), "one");
    EXPECT_EQ(binary->Read(text.size()).size(), text.size() - 3);
    file->Delete();
    EXPECT_FALSE(file->Exists());
    const auto folder = GetFolderItem("/", PathForm::Absolute);
    EXPECT_EQ(folder->OpenAsTextFile(), nullptr);
    EXPECT_EQ(folder->OpenAsBinaryFile(), nullptr);
    EXPECT_EQ(folder->Child("absent")->Child("x")->CreateTextFile(), nullptr);
}

TEST_F(FolderItemTest, APipeWithoutAWriterHoldsNobody) {
    ASSERT_EQ(mkfifo((root / "pipe").c_str(), 0600), 0);
    const auto pipe = GetFolderItem("/pipe", PathForm::Absolute)->OpenAsTextFile();
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(pipe->ReadAll(), "");
}

TEST_F(FolderItemTest, AFileWithoutAnEndIsReadToABound) {
    FolderItem::SetRoot("/");
    const auto endless = GetFolderItem("/dev/zero", PathForm::Absolute)->OpenAsTextFile();
    EXPECT_EQ(endless->ReadAll().size(), std::size_t{64} << 20U);
}

TEST_F(FolderItemTest, OpenFilesAreClosedInCommandsThatAreStarted) {
    const auto file = GetFolderItem("/file", PathForm::Absolute);
    const auto out = file->CreateTextFile();
    const auto text = file->OpenAsTextFile();
    const auto binary = file->OpenAsBinaryFile();
    int found = 0;
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        if (std::filesystem::read_symlink(entry, gone) == root / "file") {
            ++found;
            EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
        }
    EXPECT_EQ(found, 3);
}

TEST_F(FolderItemTest, AFullDiskRaises) {
    FolderItem::SetRoot("/");
    const auto stream = GetFolderItem("/dev/full", PathForm::Absolute)->CreateTextFile();
    ASSERT_NE(stream, nullptr);
    EXPECT_THROW(stream->Write("x"), RuntimeException);
}

TEST_F(FolderItemTest, PreferencesFolderFollowsTheBaseDirectoryRules) {
    setenv("HOME", "/home/somebody", 1);
    setenv("XDG_CONFIG_HOME", "/elsewhere", 1);
    EXPECT_EQ(PreferencesFolder()->AbsolutePath(), "/elsewhere");
    setenv("XDG_CONFIG_HOME", "relative/is/ignored", 1);
    EXPECT_EQ(PreferencesFolder()->AbsolutePath(), "/home/somebody/.config");
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(PreferencesFolder()->AbsolutePath(), "/home/somebody/.config");
    unsetenv("HOME");
    EXPECT_EQ(PreferencesFolder()->AbsolutePath(), HomeOf(getuid()) + "/.config");
    if (getuid() != 0)
        return; // Nobody else can become another user.
    constexpr uid_t nobody = 65534;
    setenv("XDG_CONFIG_HOME", "/elsewhere", 1);
    setenv("HOME", "/elsewhere", 1);
    const auto becomeNobody = [&] {
        const bool changed = setresuid(nobody, nobody, nobody) == 0;
        const auto folder = PreferencesFolder();
        _exit(changed && folder->AbsolutePath() == HomeOf(nobody) + "/.config" ? 0 : 1);
    };
    EXPECT_EXIT(becomeNobody(), testing::ExitedWithCode(0), "");
}

TEST_F(FolderItemTest, ABundleIsAFolderWithADescription) {
    const auto url = [](const char* path) {
        return CFURL::FromFolderItem(GetFolderItem(path, PathForm::Absolute));
    };
    EXPECT_EQ(CFBundle::FromURL(url("/absent")), nullptr);
    std::filesystem::create_directories(root / "bundle");
    EXPECT_EQ(CFBundle::FromURL(url("/bundle"))->InfoDictionary(), nullptr);
    Write("bundle/Info.plist", "<plist><array/></plist>");
    EXPECT_EQ(CFBundle::FromURL(url("/bundle"))->InfoDictionary(), nullptr);
    Write("bundle/Info.plist",
          "<plist version=\"1.0\"><dict><key>Name</key><string>KQU</string></dict></plist>");
    const auto info = CFBundle::FromURL(url("/bundle"))->InfoDictionary();
    EXPECT_EQ(CFCast<CFString>(info->Value("Name"))->Text(), "KQU");
}

} // namespace
} // namespace kqu
