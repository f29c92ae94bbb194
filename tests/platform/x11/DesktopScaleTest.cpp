#include "platform/x11/DesktopScale.h"

#include <gtest/gtest.h>
#include <string>

namespace kqu::platform {
namespace {

/// The bytes of an XSETTINGS property.
class Settings {
  public:
    explicit Settings(bool leastFirst) : leastFirst_(leastFirst) {
        bytes_ = leastFirst ? '\0' : '\1';
        bytes_ += std::string("\0\0\0", 3);
        Number(7, 4);
        Number(3, 4);
        Name(1, "Net/ThemeName");
        Number(5, 4);
        bytes_ += std::string("Adwai\0\0\0", 8);
        Name(2, "Some/Colour");
        bytes_ += std::string(8, '\xFF');
    }
    std::string With(const std::string& name, unsigned int value) {
        Name(0, name);
        Number(value, 4);
        return bytes_;
    }

  private:
    void Number(unsigned int value, int size) {
        for (int i = 0; i < size; ++i)
            bytes_ += static_cast<char>(value >> 8 * (leastFirst_ ? i : size - 1 - i));
    }
    void Name(char type, const std::string& name) {
        bytes_ += {type, '\0'};
        Number(static_cast<unsigned int>(name.size()), 2);
        bytes_ += name + std::string((4 - name.size() % 4) % 4, '\0');
        Number(1, 4);
    }
    bool leastFirst_;
    std::string bytes_;
};

std::optional<int> Read(const std::string& bytes) {
    return WindowScalingFactor(bytes);
}

TEST(DesktopScale, IsTheWindowScalingFactorOfTheSettings) {
    for (const bool leastFirst : {false, true}) {
        EXPECT_EQ(Read(Settings(leastFirst).With("Gdk/WindowScalingFactor", 2)), 2);
        EXPECT_EQ(Read(Settings(leastFirst).With("Gdk/WindowScalingFactor", 90)), 3);
        EXPECT_EQ(Read(Settings(leastFirst).With("Gdk/UnscaledDPI", 2)), std::nullopt);
        const std::string whole = Settings(leastFirst).With("Gdk/WindowScalingFactor", 2);
        for (std::size_t length = 0; length + 8 < whole.size(); ++length)
            EXPECT_EQ(Read(whole.substr(0, length)), std::nullopt) << length;
    }
    EXPECT_EQ(Read(std::string(200, '\xFF')), std::nullopt);
}

TEST(DesktopScale, IsElseTheResolutionOfTheResources) {
    using Case = std::pair<const char*, std::optional<int>>;
    for (const auto& [database, scale] :
         {Case{"Xft.dpi:\t96\n", 1}, Case{"a: b\nXft.dpi: 192\nc: d", 2}, Case{"Xft.dpi: 143", 1},
          Case{"Xft.dpi:144.0\n", 2}, Case{"Xft.dpi: 9999", 3}, Case{"Xft.dpi: -3", 1},
          Case{"Xft.dpi: nan", std::nullopt}, Case{"Xft.dpi:", std::nullopt},
          Case{"NotXft.dpi: 192", std::nullopt}, Case{"", std::nullopt}})
        EXPECT_EQ(ScaleOfResources(database), scale) << database;
}

} // namespace
} // namespace kqu::platform
