#include "platform/text/RecentCache.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using Cache = RecentCache<int>;

TEST(RecentCache, KeepsWhatIsAskedForAndDropsTheRestWithTime) {
    const Cache::Moment start{};
    Cache cache(2000ms, 1U << 20U);
    cache.Enter("used", 1, 0, start);
    cache.Enter("left", 2, 0, start);
    EXPECT_EQ(*cache.Find("used", start + 1500ms), 1);
    cache.Enter("new", 3, 0, start + 3000ms);
    EXPECT_EQ(cache.Find("left", start + 3000ms), nullptr);
    EXPECT_EQ(*cache.Find("used", start + 3000ms), 1);
    EXPECT_EQ(*cache.Find("new", start + 3000ms), 3);
}

TEST(RecentCache, AListThatDoesNotFitKeepsThePartThatDoes) {
    Cache::Moment now{};
    Cache cache(2000ms, 10000);
    const auto paint = [&] {
        int found = 0;
        for (int i = 0; i < 1000; ++i) {
            const std::string key = std::to_string(i);
            if (const int* value = cache.Find(key, now)) {
                EXPECT_EQ(*value, i);
                ++found;
            } else {
                EXPECT_EQ(cache.Enter(key, i, 500, now), i);
            }
        }
        return found;
    };
    EXPECT_EQ(paint(), 0);
    now += 500ms;
    EXPECT_GT(paint(), 10);
    EXPECT_LT(cache.Bytes(), 11000U);
    // What has grown counts with its new size, and is taken off again when it goes.
    cache.Grow("0", 9500);
    EXPECT_GT(cache.Bytes(), 19000U);
    cache.Enter("later", 0, 0, now + 1h);
    EXPECT_EQ(cache.Count(), 1U);
    EXPECT_LT(cache.Bytes(), 1000U);
}

} // namespace
} // namespace kqu::platform
