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

TEST(RecentCache, NeverHoldsMoreThanItsLimitForLong) {
    const Cache::Moment now{};
    Cache cache(2000ms, 10000);
    for (int i = 0; i < 1000; ++i)
        cache.Enter(std::to_string(i), i, 500, now);
    EXPECT_LE(cache.Bytes(), 10000U);
    EXPECT_GT(cache.Count(), 5U);
    EXPECT_EQ(*cache.Find("999", now), 999);
    EXPECT_EQ(cache.Find("0", now), nullptr);
    // What has grown counts with its new size, and is taken off again when it goes.
    cache.Grow("999", 9500);
    cache.Enter("next", 0, 0, now);
    EXPECT_LE(cache.Bytes(), 10000U);
    cache.Enter("later", 0, 0, now + 1h);
    EXPECT_EQ(cache.Count(), 1U);
    EXPECT_LT(cache.Bytes(), 1000U);
}

} // namespace
} // namespace kqu::platform
