#include "framework/images.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <string_view>

#include "framework/qt/image.h"
#include "tests/support/ui_driver.h"

namespace permora::testing {
namespace {

CIcon FromText(std::string_view file) {
    return CIcon::FromFile(std::as_bytes(std::span(file)), {24, 24});
}

TEST(Images, ADrawingIsMadeTheSizeThatIsWanted) {
    const UiDriver ui;
    const CIcon icon = FromText(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 8 8">)"
                                R"(<rect width="8" height="8" fill="#f00"/></svg>)");
    ASSERT_TRUE(icon) << "the toolkit's plugin for drawings is missing (libqt6svg6)";
    EXPECT_EQ(qt::ToQt(icon).availableSizes(), QList<QSize>{QSize(24, 24)});
    EXPECT_EQ(qt::ToQt(icon).pixmap(24).toImage().pixelColor(23, 23), QColor(Qt::red));
}

TEST(Images, WhatIsNeitherADrawingNorAPngIsNoIcon) {
    const UiDriver ui;
    for (const std::string_view file :
         {"", "text", "<svg", "\x89PNG\r\n\x1A\n", "P1 1 1 1", "#define a_width 1"})
        EXPECT_FALSE(FromText(file)) << file;
}

}  // namespace
}  // namespace permora::testing
