#include "platform/dbus/SenderTrust.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace kqu::platform {
namespace {

using Opinion = SenderTrust::Opinion;

class Ledger final : public SenderTrust::Bus {
  public:
    void AskForUser(const std::string& sender) override { asked.push_back(sender); }
    void Forget(const std::string& sender) override { forgotten.push_back(sender); }
    std::vector<std::string> asked;
    std::vector<std::string> forgotten;
};

class SenderTrustTest : public testing::Test {
  protected:
    static PostedNotification Named(const std::string& name, std::size_t size = 0) {
        return {name, std::string(size, 'x'), WireDictionary()};
    }
    /// The names that may be heard now that the bus has told the sender's user.
    std::string Answer(const std::string& sender, std::optional<uid_t> user) {
        std::string names;
        for (const PostedNotification& posted : trust.Answered(sender, user))
            names += *posted.name;
        return names;
    }

    Ledger bus;
    uid_t own = 1000;
    SenderTrust trust{bus, [this] { return own; }};
};

TEST_F(SenderTrustTest, RootAndTheOwnUserAreHeardAndNobodyElse) {
    const struct {
        std::optional<uid_t> user;
        std::string heard;
        Opinion opinion;
    } cases[] = {{0, "ab", Opinion::Heard},
                 {1000, "ab", Opinion::Heard},
                 {1001, "", Opinion::Refused},
                 {65534, "", Opinion::Refused},
                 {static_cast<uid_t>(-1), "", Opinion::Refused},
                 {std::nullopt, "", Opinion::Open}};
    for (const auto& [user, heard, opinion] : cases) {
        trust.Hold(":1.7", Named("a"));
        trust.Hold(":1.7", Named("b"));
        EXPECT_EQ(Answer(":1.7", user), heard);
        EXPECT_EQ(trust.Of(":1.7"), opinion);
        EXPECT_EQ(trust.HeldBytes(), 0U);
        trust.Left(":1.7");
    }
    EXPECT_EQ(trust.Senders(), 0U);
}

TEST_F(SenderTrustTest, TheOwnUserIsThatOfTheTimeOfTheAnswer) {
    trust.Hold(":1.1", Named("a"));
    own = 2000;
    EXPECT_EQ(Answer(":1.1", 1000), "");
    trust.Hold(":1.2", Named("b"));
    EXPECT_EQ(Answer(":1.2", 2000), "b");
}

TEST_F(SenderTrustTest, ASenderIsAskedForOnceUntilItLeaves) {
    trust.Hold(":1.1", Named("a"));
    trust.Hold(":1.2", Named("x"));
    trust.Hold(":1.1", Named("b"));
    EXPECT_EQ(bus.asked, (std::vector<std::string>{":1.1", ":1.2"}));
    EXPECT_EQ(Answer(":1.1", 0), "ab");
    EXPECT_EQ(Answer(":1.1", 5), "") << "a second answer changes nothing";
    EXPECT_EQ(trust.Of(":1.1"), Opinion::Heard);

    trust.Left(":1.1");
    trust.Left(":1.2");
    trust.Left(":1.3");
    EXPECT_EQ(bus.forgotten, (std::vector<std::string>{":1.1", ":1.2"}));
    EXPECT_EQ(Answer(":1.2", 0), "") << "what it had posted went with it";
    trust.Hold(":1.1", Named("c"));
    EXPECT_EQ(bus.asked.back(), ":1.1");
    EXPECT_EQ(bus.asked.size(), 3U);
}

TEST_F(SenderTrustTest, AnUnknownSenderIsAskedForAnew) {
    trust.Hold(":1.1", Named("a"));
    EXPECT_EQ(Answer(":1.1", std::nullopt), "");
    EXPECT_EQ(bus.forgotten.size(), 1U);
    trust.Hold(":1.1", Named("b"));
    EXPECT_EQ(Answer(":1.1", 0), "b");
}

TEST_F(SenderTrustTest, WhatOneSenderHoldsBackIsBounded) {
    for (std::size_t i = 0; i < SenderTrust::mostHeldPerSender + 10; ++i)
        trust.Hold(":1.1", Named(i < 3 ? std::to_string(i) : ""));
    trust.Hold(":1.1", Named("late"));
    EXPECT_EQ(Answer(":1.1", 0), "012");

    trust.Hold(":1.2", Named("first", SenderTrust::mostBytesPerSender / 2));
    trust.Hold(":1.2", Named("too much", SenderTrust::mostBytesPerSender / 2));
    trust.Hold(":1.2", Named("small"));
    EXPECT_EQ(Answer(":1.2", 0), "firstsmall");
}

TEST_F(SenderTrustTest, WhoFillsTheRoomLosesAllAndOthersNothing) {
    const std::size_t large = SenderTrust::mostBytesOfAll / 4;
    trust.Hold(":1.1", Named("honest"));
    for (int i = 0; i < 2; ++i)
        trust.Hold(":1.2", Named("greedy", large));
    trust.Hold(":1.3", Named("one", large));
    trust.Hold(":1.4", Named("last", large));
    EXPECT_LE(trust.HeldBytes(), SenderTrust::mostBytesOfAll);
    EXPECT_EQ(Answer(":1.2", 0), "");
    EXPECT_EQ(Answer(":1.1", 0), "honest");
    EXPECT_EQ(Answer(":1.3", 0), "one");
    EXPECT_EQ(Answer(":1.4", 0), "last");
    EXPECT_EQ(trust.HeldBytes(), 0U);
}

TEST_F(SenderTrustTest, TheNumberOfSendersIsBounded) {
    const auto name = [](std::size_t number) { return ":1." + std::to_string(number); };
    for (std::size_t i = 0; i < SenderTrust::mostSenders; ++i)
        trust.Hold(name(i), Named("a"));
    trust.Hold(":2.1", Named("a"));
    EXPECT_EQ(trust.Senders(), SenderTrust::mostSenders);
    EXPECT_EQ(bus.asked.size(), SenderTrust::mostSenders) << "all are still being asked for";

    static_cast<void>(Answer(name(9), 0));
    static_cast<void>(Answer(name(5), 77));
    trust.Hold(":2.2", Named("b"));
    EXPECT_EQ(bus.forgotten, (std::vector<std::string>{name(5)})) << "the oldest that is decided";
    EXPECT_EQ(trust.Of(name(9)), Opinion::Heard);
    EXPECT_EQ(Answer(":2.2", 0), "b");
}

TEST_F(SenderTrustTest, NothingIsRememberedOverALostConnection) {
    trust.Hold(":1.1", Named("a"));
    static_cast<void>(Answer(":1.1", 0));
    trust.Hold(":1.2", Named("b"));
    trust.Clear();
    EXPECT_EQ(trust.Of(":1.1"), Opinion::Open);
    EXPECT_EQ(Answer(":1.2", 0), "");
    EXPECT_EQ(trust.HeldBytes(), 0U);
    EXPECT_TRUE(bus.forgotten.empty()) << "there is nobody to tell";
}

} // namespace
} // namespace kqu::platform
