#include "platform/dbus/SenderTrust.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace kqu::platform {
namespace {

using Opinion = SenderTrust::Opinion;
using Names = std::vector<std::string>;

struct SenderTrustTest : testing::Test, SenderTrust::Bus {
    void AskForUser(const std::string& sender) override { asked.push_back(sender); }
    void Forget(const std::string& sender) override { forgotten.push_back(sender); }

    void Hold(const std::string& sender, const std::string& name, std::size_t size = 0) {
        trust.Hold(sender, {name, std::string(size, 'x'), WireDictionary()});
    }
    /// The names that may be heard now that the bus has told the sender's user.
    std::string Answer(const std::string& sender, std::optional<uid_t> user) {
        std::string names;
        for (const PostedNotification& posted : trust.Answered(sender, user))
            names += *posted.name;
        return names;
    }

    Names asked;
    Names forgotten;
    SenderTrust trust{*this};
};

TEST_F(SenderTrustTest, RootAndTheOwnUserAreHeardAndNobodyElse) {
    const std::tuple<std::optional<uid_t>, const char*, Opinion> cases[] = {
        {0, "ab", Opinion::Heard},
        {getuid(), "ab", Opinion::Heard},
        {getuid() + 1, "", Opinion::Refused},
        {static_cast<uid_t>(-1), "", Opinion::Refused},
        {std::nullopt, "", Opinion::Open}};
    for (const auto& [user, heard, opinion] : cases) {
        Hold(":1.7", "a");
        Hold(":1.7", "b");
        EXPECT_EQ(Answer(":1.7", user), heard);
        EXPECT_EQ(trust.Of(":1.7"), opinion);
        trust.Left(":1.7");
    }
}

TEST_F(SenderTrustTest, ASenderIsAskedForOnceUntilItLeavesOrTheConnectionDoes) {
    Hold(":1.1", "a");
    Hold(":1.2", "x");
    Hold(":1.1", "b");
    EXPECT_EQ(asked, (Names{":1.1", ":1.2"}));
    EXPECT_EQ(Answer(":1.1", 0), "ab");
    EXPECT_EQ(Answer(":1.1", 5), "") << "a second answer changes nothing";
    EXPECT_EQ(trust.Of(":1.1"), Opinion::Heard);
    for (const char* sender : {":1.1", ":1.2", ":1.3"})
        trust.Left(sender);
    EXPECT_EQ(forgotten, (Names{":1.1", ":1.2"}));
    EXPECT_EQ(Answer(":1.2", 0), "") << "what it had posted went with it";
    // One that the bus doesn't know is forgotten as well.
    Hold(":1.1", "c");
    EXPECT_EQ(Answer(":1.1", std::nullopt), "");
    Hold(":1.1", "d");
    EXPECT_EQ(Answer(":1.1", 0), "d");
    Hold(":1.4", "e");
    EXPECT_EQ(asked, (Names{":1.1", ":1.2", ":1.1", ":1.1", ":1.4"}));
    trust.Clear();
    EXPECT_EQ(trust.Of(":1.1"), Opinion::Open);
    EXPECT_EQ(Answer(":1.4", 0), "");
    EXPECT_EQ(forgotten.size(), 3U) << "there is nobody to tell";
}

TEST_F(SenderTrustTest, WhatIsHeldBackIsBoundedAndWhoFillsTheRoomLosesAll) {
    for (std::size_t i = 0; i < SenderTrust::mostHeldPerSender + 10; ++i)
        Hold(":1.1", i < 3 ? std::to_string(i) : "");
    Hold(":1.1", "late");
    EXPECT_EQ(Answer(":1.1", 0), "012");
    Hold(":1.2", "first", SenderTrust::mostBytesPerSender / 2);
    Hold(":1.2", "too much", SenderTrust::mostBytesPerSender / 2);
    Hold(":1.2", "small");
    EXPECT_EQ(Answer(":1.2", 0), "firstsmall");

    Hold(":2.1", "honest");
    for (const char* sender : {":2.2", ":2.2", ":2.3", ":2.4"})
        Hold(sender, "large", SenderTrust::mostBytesOfAll / 4);
    EXPECT_EQ(Answer(":2.2", 0), "");
    EXPECT_EQ(Answer(":2.1", 0) + Answer(":2.3", 0) + Answer(":2.4", 0), "honestlargelarge");
}

TEST_F(SenderTrustTest, TheNumberOfSendersIsBounded) {
    for (std::size_t i = 0; i < SenderTrust::mostSenders; ++i)
        Hold(":1." + std::to_string(i), "a");
    Hold(":2.1", "a");
    EXPECT_EQ(asked.size(), SenderTrust::mostSenders) << "all are still being asked for";
    static_cast<void>(Answer(":1.9", 0));
    static_cast<void>(Answer(":1.5", 77));
    Hold(":2.2", "b");
    EXPECT_EQ(forgotten, Names{":1.5"}) << "the oldest that is decided";
    EXPECT_EQ(trust.Of(":1.9"), Opinion::Heard);
    EXPECT_EQ(Answer(":2.2", 0), "b");
}

} // namespace
} // namespace kqu::platform
