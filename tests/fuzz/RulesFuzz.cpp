#include "tests/fuzz/Expect.h"
#include "tests/oracle/Random.h"

#include <array>
#include <fuzzer/FuzzedDataProvider.h>

// One case of the oracle's tests, drawn from the input: what the program makes of any files,
// notifications, outputs, sizes and bars, compared with what the rules make of them.

namespace {

class Teller : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override {
        std::fputs(result.message(), stderr);
        kqu::fuzz::Expect(!result.failed());
    }
};

void PrepareTests() {
    int count = 1;
    std::array<char, 1> name{};
    std::array<char*, 2> arguments{name.data(), nullptr};
    testing::InitGoogleTest(&count, arguments.data());
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    listeners.Append(new Teller);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isPrepared = (PrepareTests(), true);
    FuzzedDataProvider input(data, size);
    testing::GTEST_FLAG(filter) = input.PickValueInArray(
        {"*.Texts", "*.ShellAndLiveness", "*.FlavourOfTheSuite", "*.PlaceOfThePanel",
         "*.AnswersToPowerMessages", "*.SizesOverWholeHistories", "*.Bars",
         "*.NotificationsAndTheListTheyMake"});
    kqu::oracle::fuzzed = [&](int least, int most) {
        return input.ConsumeIntegralInRange(least, most);
    };
    kqu::fuzz::Expect(isPrepared && RUN_ALL_TESTS() == 0);
    return 0;
}
