#include "framework/values/Dictionary.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

namespace kqu {
namespace {

TEST(Dictionary, KeepsTheOrderOfInsertionAcrossRemovalsAndRaisesBeyondIt) {
    Dictionary table;
    for (int i = 0; i < 100; ++i)
        table.SetValue("key " + std::to_string(i), i);
    for (int i = 0; i < 100; i += 3)
        table.Remove("KEY " + std::to_string(i));
    table.SetValue("key 3", 1003);
    int previous = -1;
    for (int index = 0; index < table.Count(); ++index) {
        const std::int32_t value = table.Value(table.Key(index)).Int32Value();
        EXPECT_GT(value, previous);
        previous = value;
    }
    EXPECT_EQ(previous, 1003);
    table.SetValue("KEY 1", 1);
    EXPECT_EQ(table.Key(0), "key 1") << "under its first spelling";
    EXPECT_THROW(static_cast<void>(table.Value("key 0")), KeyNotFoundException);
    EXPECT_THROW(table.Remove("key 0"), KeyNotFoundException);
    for (const int beyond : {-1, 67})
        EXPECT_THROW(static_cast<void>(table.Key(beyond)), OutOfBoundsException);
    EXPECT_EQ(table.Count(), 67);
}

TEST(Variant, KeepsItsTypeAndConvertsOnReading) {
    using Type = Variant::Type;
    const std::tuple<Variant, Type, std::string, std::int32_t, double> cases[] = {
        {4.9, Type::Double, "4.9", 4, 4.9},
        {-4.9, Type::Double, "-4.9", -4, -4.9},
        {0.0, Type::Double, "0", 0, 0},
        {1500000.0, Type::Double, "1500000", 1500000, 1500000},
        {4294967297.0, Type::Double, "4294967297", 2147483647, 4294967297.0},
        {-1e300, Type::Double, "-1e+300", -2147483647 - 1, -1e300},
        {"12abc", Type::String, "12abc", 12, 12},
        {7, Type::Int32, "7", 7, 7},
        {3000000000U, Type::UInt32, "3000000000", 2147483647, 3e9},
        {true, Type::Boolean, "True", 1, 1},
        {Variant(), Type::Nil, "", 0, 0}};
    for (const auto& [value, type, text, number, real] : cases) {
        EXPECT_EQ(value.Kind(), type) << text;
        EXPECT_EQ(value.StringValue(), text);
        EXPECT_EQ(value.Int32Value(), number) << text;
        EXPECT_EQ(value.DoubleValue(), real) << text;
    }
    EXPECT_EQ(Variant(3000000000U).UInt32Value(), 3000000000U);
    EXPECT_EQ(Variant(-1.0).UInt32Value(), 0U);
    EXPECT_EQ(Variant(5).ObjectAs<Dictionary>(), nullptr);
    class Other : public Object {};
    EXPECT_THROW(static_cast<void>(Variant(std::make_shared<Dictionary>()).ObjectAs<Other>()),
                 IllegalCastException);
}

} // namespace
} // namespace kqu
