// The attributes dialog on real files, from the command to the disk.
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include "browser/attribute_boxes.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/places.h"

namespace permora::test {
namespace {

TEST(AttributeBoxes, MakeTheWordThatIsWritten) {
    struct Case {
        DWORD item;
        DWORD word;
    };
    // Directory, sparse, compressed and encrypted are no matter of the word.
    for (const Case& each : {Case{0x80, 0x80},
                             {0x20, 0x20},
                             {0x2000, 0x2000},
                             {0x3127, 0x3127},
                             {0xFFFF, 0x3127},
                             {0x10, 0x80},
                             {0x110, 0x100},
                             {0x4A00, 0x80}}) {
        EXPECT_EQ(AttributeWordOf(BoxesOf(each.item)), each.word) << std::hex << each.item;
    }
    EXPECT_EQ(AttributeWordOf(CheckedBoxes()), FILE_ATTRIBUTE_NOT_CONTENT_INDEXED);
}

class AttributesDialog : public BrowserTest {
  protected:
    // On the files "1" to "3" of T:\, with these attributes, all selected.
    void StartWith(DWORD first, DWORD second, DWORD third) {
        for (const auto& [name, attributes] :
             {std::pair("1", first), std::pair("2", second), std::pair("3", third)}) {
            folder.MakeFile(name);
            ASSERT_TRUE(SetFileAttributesA((std::string("T:\\") + name).c_str(), attributes));
        }
        Start("T:\\");
        view.SortByColumn(0);
        view.SelectAll();
    }
    static DWORD Of(const char* name) { return GetFileAttributesA((std::string("T:\\") + name).c_str()); }
    void Edit() { frame.RunCommand(ID_ATTRIBUTES); }
};

TEST_F(AttributesDialog, GivesEveryItemWhatTheFirstShows) {
    StartWith(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_OFFLINE, FILE_ATTRIBUTE_NORMAL,
              FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED);
    ui.ExpectDialog(IDD_ATTRIBUTES, [](WindowDriver& dialog) {
        EXPECT_EQ(dialog.Title(), "File Attributes - 1");
        const std::pair<unsigned int, bool> kShown[] = {{IDC_ARCHIVE, false},       {IDC_READONLY, true},
                                                        {IDC_HIDDEN, true},         {IDC_SYSTEM, false},
                                                        {IDC_ALLOW_INDEXING, true}, {IDC_TEMPORARY, false}};
        for (const auto& [box, isChecked] : kShown) {
            EXPECT_EQ(dialog.IsChecked(box), isChecked) << box;
            EXPECT_TRUE(dialog.IsEnabled(box)) << box;
        }
        const unsigned int kNeverShown[] = {IDC_OFFLINE, IDC_COMPRESSED, IDC_ENCRYPTED};
        for (const unsigned int box : kNeverShown)
            EXPECT_FALSE(dialog.IsVisible(box)) << box;
        dialog.Click(IDC_SYSTEM);
        dialog.Click(IDC_HIDDEN);
        dialog.Click(IDOK);
    });
    Edit();
    for (const char* name : {"1", "2", "3"})
        EXPECT_EQ(Of(name), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_OFFLINE) << name;
    ui.ExpectDialog(IDD_ATTRIBUTES, [](WindowDriver& dialog) {
        dialog.Click(IDC_ARCHIVE);
        dialog.Click(IDCANCEL);
    });
    Edit();
    EXPECT_EQ(Of("1"), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_OFFLINE);
}

TEST_F(AttributesDialog, StopsAtTheFirstItemThatFails) {
    StartWith(FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_NORMAL);
    std::filesystem::remove(folder.Path("2"));
    ASSERT_EQ(symlink("3", folder.Path("2").c_str()), 0);  // where no attributes can be kept
    ui.ExpectDialog(IDD_ATTRIBUTES, [](WindowDriver& dialog) {
        dialog.Click(IDC_HIDDEN);
        dialog.Click(IDOK);
    });
    ExpectError("Attributes assignment: ");
    Edit();
    EXPECT_EQ(Of("1"), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(Of("3"), FILE_ATTRIBUTE_NORMAL);

    // The changes of the hidden boxes come after the attribute word, and their failure stops the rest.
    std::filesystem::current_path(folder.Path());
    const Place place = InCurrentFolder({"1", "3"});
    const CheckedBoxes before = BoxesOf(FILE_ATTRIBUTE_NORMAL);
    for (const DWORD asked : {FILE_ATTRIBUTE_COMPRESSED, FILE_ATTRIBUTE_ENCRYPTED}) {
        EXPECT_EQ(
            AssignAttributes(place, BoxesOf(FILE_ATTRIBUTE_SYSTEM | asked), before, [] { return true; }),
            ERROR_NOT_SUPPORTED);
        EXPECT_EQ(Of("1"), FILE_ATTRIBUTE_SYSTEM);
        EXPECT_EQ(Of("3"), FILE_ATTRIBUTE_NORMAL);
    }
}

TEST_F(AttributesDialog, SaysWhyItDoesNotOpen) {
    StartWith(FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_NORMAL);
    std::filesystem::remove(folder.Path("1"));
    ExpectError("Retrieving file attributes: ");
    Edit();
    view.InvertSelection();
    Edit();  // nothing selected
    view.GoToRoot();
    view.SelectAll();
    ui.ExpectInformation("Cannot set attributes for disk drive.");
    Edit();
}

// As the volume itself stores them, big endian.
DWORD OnVolume(const std::string& hostPath) {
    std::array<unsigned char, 4> bytes{};
    EXPECT_EQ(lgetxattr(hostPath.c_str(), "system.ntfs_attrib_be", bytes.data(), bytes.size()), 4);
    return DWORD{bytes[0]} << 24 | DWORD{bytes[1]} << 16 | DWORD{bytes[2]} << 8 | bytes[3];
}

TEST_F(AttributesDialog, OnNtfsLetsOnlyFilesBeTemporary) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_TRUE(host::PinDrive('T', volume.Root()));
    ASSERT_TRUE(std::filesystem::create_directory(volume.Path("a folder")));
    std::filesystem::copy_file("/etc/passwd", volume.Path("file"));
    constexpr std::array<unsigned char, 4> kTemporary{0, 0, 0x01, 0};
    ASSERT_EQ(setxattr(volume.Path("a folder").c_str(), "system.ntfs_attrib_be", kTemporary.data(),
                       kTemporary.size(), 0),
              0);
    Start("T:\\");
    view.SelectAll();
    ui.ExpectDialog(IDD_ATTRIBUTES, [this](WindowDriver& dialog) {
        EXPECT_TRUE(dialog.IsChecked(IDC_TEMPORARY));
        EXPECT_FALSE(dialog.IsEnabled(IDC_TEMPORARY));
        dialog.Click(IDC_HIDDEN);
        ExpectError(
            "Attributes assignment: ");  // the box is written back, and the system has no such folders
        dialog.Click(IDOK);
    });
    Edit();
    EXPECT_EQ(OnVolume(volume.Path("a folder")), 0x110U);

    view.InvertSelection();
    view.List().SetSelected(Row("file"), true);
    ui.ExpectDialog(IDD_ATTRIBUTES, [](WindowDriver& dialog) {
        dialog.Click(IDC_ALLOW_INDEXING);
        dialog.Click(IDC_TEMPORARY);
        dialog.Click(IDC_ARCHIVE);  // set for every new file
        dialog.Click(IDOK);
    });
    Edit();
    EXPECT_EQ(OnVolume(volume.Path("file")), FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_TEMPORARY);
    view.GoToRoot();
    ASSERT_EQ(chdir("/"), 0);
}

}  // namespace
}  // namespace permora::test
