#include "framework/images.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <QImage>
#include <set>

#include "framework/qt/image.h"
#include "framework/resource_file.h"
#include "framework/resource_templates.h"
#include "resources/embedded_resources.h"
#include "resources/resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora::test {
namespace {

std::set<int> WidthsOf(const CIcon& icon) {
    std::set<int> widths;
    for (const QSize& size : qt::ToQt(icon).availableSizes())
        widths.insert(size.width());
    return widths;
}

TEST(Images, EveryIconAndBitmapOfTheProgramIsReadInAllItsSizes) {
    const UiDriver ui;
    const auto entries = ReadResourceFile(EmbeddedResources());
    ASSERT_TRUE(entries);
    std::size_t count = 0;
    for (const ResourceEntry& entry : *entries) {
        if (entry.type == static_cast<std::uint16_t>(ResourceType::kBitmap)) {
            EXPECT_TRUE(CIcon::FromBitmap(entry.id)) << entry.id;
        } else if (entry.type == static_cast<std::uint16_t>(ResourceType::kIconGroup)) {
            std::set<int> widths;
            const auto group = ParseIconGroup(entry.data);
            ASSERT_TRUE(group) << entry.id;
            for (const IconGroupEntry& picture : *group)
                widths.insert(picture.size.cx);
            EXPECT_EQ(WidthsOf(CIcon::Load(entry.id)), widths) << entry.id;
            ++count;
        }
    }
    EXPECT_GT(count, 0U);
    EXPECT_FALSE(CIcon::Load(0xFFFF));
    EXPECT_FALSE(CIcon::FromBitmap(0xFFFF));
}

TEST(Images, ABitmapKeepsItsTransparency) {
    const UiDriver ui;
    const QImage image = qt::LargestPixmap(qt::ToQt(CIcon::FromBitmap(IDB_GO_NORMAL))).toImage();
    ASSERT_FALSE(image.isNull());
    EXPECT_LT(image.pixelColor(0, 0).alpha(), 0x10);
    EXPECT_EQ(image.pixelColor(8, 8).alpha(), 0xFF);
}

TEST(Images, PixelsThatAreTooFewAreNoIcon) {
    const UiDriver ui;
    const std::vector<std::uint8_t> pixels = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(WidthsOf(CIcon::FromPixels({2, 1}, pixels)), std::set<int>{2});
    for (const Size size : {Size{3, 1}, Size{1, 3}, Size{0, 1}, Size{1, -1}, Size{0x40000000, 1}})
        EXPECT_FALSE(CIcon::FromPixels(size, pixels)) << size.cx << ' ' << size.cy;
}

}  // namespace
}  // namespace permora::test
