#include "platform/file_types.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <filesystem>
#include <fstream>

#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora::test {
namespace {

using test::TemporaryFolder;

// The types of a desktop that has been described in files.
const FileTypes& Types() {
    return *thePresenters.fileTypes.load();
}

class DesktopTypes : public ::testing::Test {
  protected:
    DesktopTypes() {
        std::filesystem::create_directories(home.Path("mime/packages"));
        std::filesystem::create_directories(home.Path("icons/mine/any"));
        std::ofstream(home.Path("mime/packages/mine.xml"))
            << R"(<mime-info xmlns="http://www.freedesktop.org/standards/shared-mime-info">)"
               R"(<mime-type type="application/x-noted"><comment>Noted ä</comment><glob pattern="*.noted"/>)"
               R"(<icon name="note"/></mime-type>)"
               R"(<mime-type type="application/x-plain"><comment>Plain</comment><glob pattern="*.plain"/>)"
               R"(</mime-type></mime-info>)";
        std::ofstream(home.Path("icons/mine/index.theme"))
            << "[Icon Theme]\nName=mine\nDirectories=any\n[any]\nSize=16\nType=Scalable\nMinSize=8\n"
               "MaxSize=64\n";
        std::ofstream(home.Path("icons/mine/any/note.svg"))
            << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 8 8">)"
               R"(<rect width="8" height="8" fill="#f00"/></svg>)";
        QIcon::setThemeSearchPaths({QString::fromStdString(home.Path("icons"))});
        QIcon::setThemeName("mine");
    }

    const UiDriver ui;
    TemporaryFolder home;
    const ScopedVariable dataHome{"XDG_DATA_HOME", home.Path()};
};

TEST_F(DesktopTypes, AreToldByNamesAlone) {
    const std::pair<const char*, const char*> kCases[] = {
        {"x.noted", "application/x-noted"},
        {"X.NOTED", "application/x-noted"},
        {"\xFF.noted", "application/x-noted"},
        {"noted", ""},
        {"", ""},
    };
    for (const auto& [name, type] : kCases)
        EXPECT_EQ(Types().TypeOfName(name), type) << name;
    EXPECT_EQ(Types().TextOf("application/x-noted"), "Noted ä");
    EXPECT_EQ(Types().TextOf("application/x-unheard-of"), "");
}

TEST_F(DesktopTypes, HaveTheIconsOfTheThemeAndShareThem) {
    const ShellIcon icon = Types().IconOf("application/x-noted");
    ASSERT_TRUE(icon.small && icon.large) << "the toolkit's plugin for drawings is missing (libqt6svg6)";
    EXPECT_EQ(icon.small->width, 16);
    EXPECT_EQ(icon.large->height, 32);
    ASSERT_EQ(icon.small->pixels.size(), 16U * 16U * 4U);
    EXPECT_EQ(std::vector(icon.small->pixels.end() - 4, icon.small->pixels.end()),
              (std::vector<std::uint8_t>{0, 0, 0xFF, 0xFF}));
    EXPECT_EQ(Types().IconOf("application/x-noted").small, icon.small);
    for (const char* none : {"application/x-plain", "application/x-unheard-of"})
        EXPECT_FALSE(Types().IconOf(none).small) << none;
}

}  // namespace
}  // namespace permora::test
