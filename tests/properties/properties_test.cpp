// The properties of real objects, from the system's call to the dialog.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "platform/linux/files/drives.h"
#include "properties/object_facts.h"
#include "properties/properties_service.h"
#include "resources/resource_ids.h"
#include "security/object_security.h"
#include "security/text_conversion.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora::test {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

TEST(PropertyTexts, TellSizesAndCounts) {
    const std::pair<ULONGLONG, const char*> kSizes[] = {{0, "0 bytes"},
                                                        {1, "1 byte"},
                                                        {1023, "1,023 bytes"},
                                                        {1536, "1 KB (1,536 bytes)"},
                                                        {1'234'567'890, "1 GB (1,234,567,890 bytes)"}};
    for (const auto& [bytes, text] : kSizes)
        EXPECT_EQ(SizeText(bytes), text);
    EXPECT_EQ(ContentsText({.files = 1, .folders = 1000}), "1 file, 1,000 folders");
    EXPECT_EQ(ContentsText({.mounted = 1, .unread = 2}),
              "0 files, 0 folders; not counted: 1 mounted volume; not readable: 2 objects");
}

class Properties : public ::testing::Test {
  protected:
    Properties() {
        setenv("TZ", "UTC-2", 1);  // two hours ahead
        EXPECT_TRUE(host::PinDrive('T', folder.Path()));
    }
    ~Properties() override {
        host::PinDrive('T', "");
        unsetenv("TZ");
    }
    // False when the system shows nothing.
    static bool Show(const std::string& path) {
        std::basic_string<WCHAR> wide;
        return SHObjectProperties(nullptr, SHOP_FILEPATH, AnsiToWide(path, wide), nullptr) != FALSE;
    }

    test::TemporaryFolder folder;
    UiDriver ui;
    CWnd noWindow;
    std::vector<std::string> edited;
    std::function<void()> onEdit = [] {};
    PatientWork wait;
    PropertiesService service{noWindow, wait, [this](const std::string& path) {
                                  edited.push_back(path);
                                  onEdit();
                              }};
};

TEST_F(Properties, OfAFileAreItsOwn) {
    const std::string file = folder.MakeFile("some file.txt");
    std::filesystem::resize_file(file, 1536);
    constexpr timespec kTimes[2] = {{1'267'970'700, 0}, {1'267'970'700, 0}};
    ASSERT_EQ(utimensat(0, file.c_str(), kTimes, 0), 0);
    ASSERT_TRUE(SetFileAttributesA("T:\\some file.txt", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
    onEdit = [&] { std::filesystem::remove(file); };
    ui.ExpectDialog(IDD_FILE_PROPERTIES, [](WindowDriver& dialog) {
        EXPECT_EQ(dialog.Title(), "Properties - some file.txt");
        EXPECT_EQ(dialog.Text(IDC_PROPERTY_NAME), "some file.txt");
        EXPECT_EQ(dialog.Text(IDC_PROPERTY_LOCATION), "T:\\");
        EXPECT_NE(dialog.Text(IDC_PROPERTY_KIND), "");
        EXPECT_TRUE(dialog.WaitUntil([&] { return dialog.Text(IDC_PROPERTY_SIZE) == "1 KB (1,536 bytes)"; }));
        EXPECT_TRUE(dialog.WaitUntil([&] { return dialog.Text(IDC_PROPERTY_SIZE_ON_DISK) == "0 bytes"; }));
        EXPECT_EQ(dialog.Text(IDC_PROPERTY_MODIFIED), "2010-03-07 16:05:00");
        EXPECT_EQ(dialog.Text(IDC_PROPERTY_ATTRIBUTES), "hidden, system");
        EXPECT_THAT(dialog.Text(IDC_PROPERTY_OWNER), HasSubstr("root"));
        dialog.Press("Alt+P");
        // The change that the editor made to the object is shown.
        EXPECT_THAT(dialog.Text(IDC_PROPERTY_OWNER), HasSubstr("No such file"));
        dialog.Press("Return");  // from a field to the default button
    });
    EXPECT_TRUE(Show("T:\\some file.txt"));
    EXPECT_EQ(edited, std::vector<std::string>{"T:\\some file.txt"});
    EXPECT_FALSE(Show("T:\\some file.txt"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(Properties, OfAFolderCountWhatIsInIt) {
    folder.MakeFolder("sub");
    folder.MakeFolder("sub/inner");
    std::filesystem::resize_file(folder.MakeFile("sub/inner/file"), 100);
    ASSERT_EQ(symlink("inner", folder.Path("sub/link").c_str()), 0);
    ui.ExpectDialog(IDD_FOLDER_PROPERTIES, [](WindowDriver& dialog) {
        EXPECT_TRUE(
            dialog.WaitUntil([&] { return dialog.Text(IDC_PROPERTY_CONTENTS) == "2 files, 1 folder"; }));
        EXPECT_EQ(dialog.Text(IDC_PROPERTY_SIZE), "100 bytes");
        dialog.Click(IDCANCEL);
    });
    EXPECT_TRUE(Show("T:\\sub"));
    ui.ExpectDialog(IDD_LINK_PROPERTIES, [](WindowDriver& dialog) {
        EXPECT_THAT(dialog.Text(IDC_PROPERTY_KIND), MatchesRegex("Link.*"));
        EXPECT_EQ(dialog.Text(IDC_PROPERTY_TARGET), "T:\\sub\\inner");
        dialog.Press("Esc");
    });
    EXPECT_TRUE(Show("T:\\sub\\link"));
}

TEST_F(Properties, OfADriveTellItsSpace) {
    ui.ExpectDialog(IDD_DRIVE_PROPERTIES, [](WindowDriver& dialog) {
        EXPECT_THAT(dialog.Title(), HasSubstr("T:\\"));
        for (const unsigned int space : {unsigned{IDC_PROPERTY_CAPACITY}, unsigned{IDC_PROPERTY_FREE}})
            EXPECT_THAT(dialog.Text(space), MatchesRegex("[0-9]+ [GT]B \\([0-9,]+ bytes\\)"));
        EXPECT_THAT(dialog.Text(IDC_PROPERTY_KIND), MatchesRegex(".*[Dd]rive"));
        dialog.Click(IDCANCEL);
    });
    EXPECT_TRUE(Show("T:\\"));
}

}  // namespace
}  // namespace permora::test
