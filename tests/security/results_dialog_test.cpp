// The list of what became of a change's objects, with the window without a display.
#include "security/results_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "framework/clipboard.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::SizeIs;

ObjectResult Result(std::size_t item, const std::string& path, DWORD error, Step step = Step::kNone) {
    return {{item, {}, ObjectPart::kObject}, {error, step, path}};
}

std::string CopiedText(CWnd& owner) {
    std::vector<std::uint8_t> bytes;
    const Clipboard clipboard(owner);
    clipboard.GetData(RegisterClipboardFormat("text/plain"), bytes);
    return {bytes.begin(), bytes.end()};
}

TEST(ResultsDialog, IsSortedCopiedAndTriesAgainWhatHasFailed) {
    UiDriver ui;
    const std::string denied = SystemMessageLine(ERROR_ACCESS_DENIED);
    ChangeResults results;
    results.Add(Result(0, "docs\\b", ERROR_SUCCESS));
    results.Add(Result(1, "docs\\mnt", ERROR_NOT_SAME_DEVICE, Step::kPassOverMounted));
    results.Add(Result(2, "docs\\d", ERROR_ACCESS_DENIED));
    results.Add(Result(3, "a", ERROR_ACCESS_DENIED));
    int attempts = 0;
    CResultsDlg dialog(nullptr, results, [&](CWnd&, std::span<const ObjectPlace> places, ChangeResults& all) {
        all.Add(Result(places.front().item, "docs\\d", ERROR_SUCCESS));
        if (++attempts == 1) return false;
        EXPECT_EQ(places.size(), 2U);
        all.Add(Result(places.back().item, "a", ERROR_ACCESS_DENIED));
        return true;
    });
    ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& window) {
        const std::string failed = "Failed | " + denied;
        const auto all =
            ElementsAre("d | " + failed + " | docs\\d", "a | " + failed + " | a",
                        "mnt | Left alone | something is mounted on it, which is a volume of its "
                        "own | docs\\mnt",
                        "b | Done |  | docs\\b");
        EXPECT_THAT(window.Rows(IDC_RESULTS), all);
        EXPECT_EQ(window.Text(IDC_RESULTS_SUMMARY), "2 objects failed, 1 was left alone, 1 is done.");
        EXPECT_TRUE(window.HasFocus(IDC_RESULTS));
        window.Press("Ctrl+C");
        EXPECT_EQ(CopiedText(dialog), "d\tFailed\t" + denied + "\tdocs\\d\n");
        window.ClickHeader(IDC_RESULTS, 0);
        ui.ExpectMenu(IDC_COPY_ALL_RESULTS);
        window.RightClickRow(IDC_RESULTS, 0);
        EXPECT_EQ(CopiedText(dialog).substr(0, 11), "a\tFailed\t" + denied.substr(0, 2));
        EXPECT_THAT(CopiedText(dialog), testing::EndsWith("docs\\mnt\n"));

        window.Click(IDC_TRY_AGAIN);
        EXPECT_THAT(window.Rows(IDC_RESULTS), SizeIs(4)) << "nothing was tried";
        EXPECT_EQ(window.Text(IDC_RESULTS_SUMMARY), "2 objects failed, 1 was left alone, 1 is done.");
        window.Click(IDC_TRY_AGAIN);
        EXPECT_EQ(window.Text(IDC_RESULTS_SUMMARY), "1 object failed, 1 was left alone, 2 are done.");
        EXPECT_EQ(window.Rows(IDC_RESULTS).at(2), "d | Done |  | docs\\d") << "in the chosen order";
        window.Press("Esc");
    });
    dialog.DoModal();
}

TEST(ResultsDialog, ListsTheFirstOfVeryManyAndOffersNothingThatCannotBeDone) {
    UiDriver ui;
    ChangeResults results;
    for (std::size_t item = 0; item < ChangeResults::kMostListed + 50; ++item)
        results.Add(Result(item, "file" + std::to_string(item), ERROR_ACCESS_DENIED));
    ui.ExpectDialog(IDD_CHANGE_RESULTS, [](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_RESULTS_SUMMARY),
                  "10,050 objects failed. Of the failures, 10,000 are listed and can be tried again; for the "
                  "others, make the whole change again.");
        EXPECT_FALSE(window.IsEnabled(IDC_TRY_AGAIN));
        window.Press("Esc");
    });
    ShowResults(nullptr, results, nullptr);

    ChangeResults single;
    single.Add(Result(0, "docs", ERROR_ACCESS_DENIED));
    single.Add(Result(1, "notes", ERROR_SUCCESS));
    ui.ExpectError(GetSystemMessageText(ERROR_ACCESS_DENIED) + "\ndocs");
    ShowResults(nullptr, single, nullptr);
    ShowResults(nullptr, {}, nullptr);
}

}  // namespace
}  // namespace permora
