#include "app/settings_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <vector>

namespace permora {
namespace {

ProgramSettings Sample() {
    ProgramSettings record;
    record.windowRect = {-10, 20, 790, 620};
    record.showCommand = kShowMaximised;
    record.reserved = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    record.block = {3, 0, 1, 0, 1, 0, {}};
    EXPECT_TRUE(SetProgramFolder(record, R"(C:\Tools)"));
    return record;
}

std::int32_t NumberAt(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
    std::int32_t number = 0;
    std::memcpy(&number, &bytes.at(offset), sizeof(number));
    return number;
}

// The places of the fields are a contract with records that are already stored.
TEST(ProgramSettings, IsStoredFieldByFieldAndScrambledWhole) {
    const StoredSettings stored = ScrambleSettings(Sample());
    std::vector<std::uint8_t> plain;
    for (const std::uint8_t byte : stored)
        plain.push_back(static_cast<std::uint8_t>(~byte ^ 0xA7));

    EXPECT_EQ(NumberAt(plain, 0), -10);
    EXPECT_EQ(NumberAt(plain, 12), 620);
    EXPECT_EQ(NumberAt(plain, 16), 3);
    EXPECT_EQ(plain.at(20), 1);
    EXPECT_EQ(NumberAt(plain, 32), 3);
    EXPECT_EQ(std::vector(plain.begin() + 36, plain.begin() + 44),
              (std::vector<std::uint8_t>{0, 1, 0, 1, 0, 0, 0, 0}));
    EXPECT_STREQ(std::string(plain.begin() + 44, plain.end()).c_str(), R"(C:\Tools)");
    EXPECT_EQ(UnscrambleSettings(stored), Sample());
}

TEST(ProgramSettings, DamagedOnesAreRefused) {
    using Change = std::function<void(ProgramSettings&)>;
    const std::vector<std::pair<const char*, Change>> changes = {
        {"a hidden window", [](ProgramSettings& record) { record.showCommand = 0; }},
        {"a minimised window", [](ProgramSettings& record) { record.showCommand = 2; }},
        {"a folder without end", [](ProgramSettings& record) { record.programFolder.fill('x'); }},
    };
    for (const auto& [name, change] : changes) {
        ProgramSettings record = Sample();
        change(record);
        EXPECT_FALSE(UnscrambleSettings(ScrambleSettings(record))) << name;
    }
    const StoredSettings stored = ScrambleSettings(Sample());
    std::vector<std::uint8_t> longer(stored.begin(), stored.end());
    longer.push_back(0);
    EXPECT_FALSE(UnscrambleSettings(longer));
    EXPECT_FALSE(UnscrambleSettings(std::span(stored).first(kSettingsSize - 1)));
    EXPECT_FALSE(UnscrambleSettings({}));
}

TEST(ProgramSettings, FlagsThatAreNotZeroAreSet) {
    ProgramSettings record = Sample();
    record.block.useOwnIcons = 2;
    record.block.showToolTips = 0xFF;
    ProgramSettings expected = Sample();
    expected.block.useOwnIcons = 1;
    EXPECT_EQ(UnscrambleSettings(ScrambleSettings(record)), expected);
}

TEST(ProgramSettings, WindowsThatNobodyCanMeanAreTold) {
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    EXPECT_TRUE(IsUsableWindow({0, 0, 800, 600}));
    EXPECT_TRUE(IsUsableWindow({-3000, -200, -1000, 900}));  // on a screen to the left
    for (const Rect& rect : {Rect{},
                             {800, 600, 0, 0},
                             {0, 0, 800, 5},
                             {kLeast, kLeast, kMost, kMost},
                             {kMost, 0, kLeast, 600},
                             {0, 0, 40000, 600}}) {
        EXPECT_FALSE(IsUsableWindow(rect))
            << rect.left << ' ' << rect.top << ' ' << rect.right << ' ' << rect.bottom;
    }
}

}  // namespace
}  // namespace permora
