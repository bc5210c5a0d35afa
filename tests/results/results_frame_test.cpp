// Windows of results, filled by hand.
#include "results/results_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <utility>

#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "resources/resource_ids.h"
#include "results/results_bar.h"
#include "results/results_windows.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;

constexpr unsigned int kObjects = CResultsFrame::kFirstListId;
constexpr unsigned int kAccounts = kObjects + 1;

class Page : public ResultPage {
  public:
    explicit Page(const char* pageTitle) : title(pageTitle) {}

    std::string Title() const override { return title; }
    std::span<const ResultColumn> Columns() const override { return kColumns; }
    std::size_t Count() const override { return names.size(); }
    std::string Text(std::size_t row, std::size_t column) const override {
        return column == 0 ? names[row] : std::string(R"(C:\x)");
    }
    std::optional<ResultObject> Object(std::size_t row) const override {
        if (title[0] != '&' || names[row].empty()) return {};
        return ResultObject{R"(C:\x\)" + names[row], TreeObjectKind::kFile, nullptr, {}};
    }

    const std::string title;
    std::vector<std::string> names;

  private:
    static constexpr std::array<ResultColumn, 2> kColumns = {
        {{"Name", 200}, {"Folder", 200, ColumnOrder::kArrival}}};
};

// Finds what the test adds, until it is ended or stopped.
class Source : public ResultSource {
  public:
    std::string Title() const override { return "Find - rows"; }
    std::vector<ResultPage*> Pages() override { return {&objects, &accounts}; }
    void Run(const std::atomic<bool>& isStopped) override {
        while (!isStopped && !mayEnd)
            std::this_thread::yield();
        wasStopped = isStopped.load();
    }
    void TakeNews() override {
        for (std::string& name : coming)
            objects.names.push_back(std::move(name));
        coming.clear();
    }
    std::string Status() const override { return std::to_string(objects.names.size()) + " found"; }
    std::span<const SaveFormat> Formats() const override { return {}; }
    DWORD Write(const SaveFormat& /*format*/, SavedOutput& /*output*/) override { return ERROR_SUCCESS; }

    Page objects{"&Objects"};
    Page accounts{"Accounts"};
    std::vector<std::string> coming;
    std::atomic<bool> mayEnd = false;
    std::atomic<bool> wasStopped = false;
};

class Host : public ResultsHost {
  public:
    void EditResults(CWnd& /*owner*/, const std::vector<ResultObject>& objects) override {
        for (const ResultObject& each : objects)
            asked += "edit " + each.path + '\n';
    }
    void ShowInFolder(const ResultObject& object) override { asked += "show " + object.path + '\n'; }

    std::string asked;
};

class ResultsFrameTest : public ::testing::Test {
  protected:
    // Shows the window and waits until it has these rows.
    WindowDriver Open(std::vector<std::string> names) {
        auto made = std::make_unique<Source>();
        source = made.get();
        source->coming = std::move(names);
        main.LoadFrame(IDR_MAIN_FRAME);
        windows.Open(std::move(made), main);
        main.DestroyWindow();
        WindowDriver window = UiDriver::MainWindow();
        window.WaitUntil([&] { return source->coming.empty(); });
        return window;
    }
    void End(WindowDriver& window) const {
        source->mayEnd = true;
        EXPECT_TRUE(window.WaitUntil([&] { return !window.IsEnabled(ID_STOP_RESULTS); }));
    }
    std::string Asked() { return std::exchange(host.asked, {}); }

    UiDriver ui;
    Host host;
    CFrameWnd main;
    ResultsWindows windows{host};
    Source* source = nullptr;  // the window's
};

TEST_F(ResultsFrameTest, RowsComeWhileTheWorkerRunsAndAreSortedByTheHeaders) {
    WindowDriver window = Open({"b", "a"});
    EXPECT_EQ(window.Title(), "Find - rows");
    EXPECT_THAT(window.Rows(kObjects), ElementsAre(R"(b | C:\x)", R"(a | C:\x)"));
    EXPECT_EQ(window.StatusText(0), "2 found");
    EXPECT_TRUE(window.IsVisible(ID_STOP_RESULTS));
    window.SelectRow(kObjects, 0);
    window.ClickHeader(kObjects, 0);
    EXPECT_THAT(window.Rows(kObjects), ElementsAre(R"(a | C:\x)", R"(b | C:\x)"));
    EXPECT_THAT(window.SelectedRows(kObjects), ElementsAre(1));
    source->coming = {"c", "A"};
    EXPECT_TRUE(window.WaitUntil([&] { return window.Rows(kObjects).size() == 4; }));
    EXPECT_EQ(window.Rows(kObjects)[3], R"(A | C:\x)");  // until the end
    End(window);
    EXPECT_THAT(window.Rows(kObjects),
                ElementsAre(R"(a | C:\x)", R"(A | C:\x)", R"(b | C:\x)", R"(c | C:\x)"));
    window.ClickHeader(kObjects, 0);
    EXPECT_EQ(window.Rows(kObjects)[0], R"(c | C:\x)");
    window.ClickHeader(kObjects, 1);
    EXPECT_EQ(window.Rows(kObjects)[0], R"(b | C:\x)");
}

TEST_F(ResultsFrameTest, OffersTheObjectsThatAreSelected) {
    WindowDriver window = Open({"one", "two"});
    EXPECT_FALSE(window.IsEnabled(ID_PERMISSIONS));
    window.DoubleClickRow(kObjects, 1);
    EXPECT_EQ(Asked(), "edit C:\\x\\two\n");
    window.Press("Ctrl+A");
    EXPECT_TRUE(window.WaitUntil([&] { return window.IsEnabled(ID_PERMISSIONS); }));
    window.Press("Return");
    EXPECT_EQ(Asked(), "edit C:\\x\\one\nedit C:\\x\\two\n");
    ui.ExpectMenu([](WindowDriver& menu) {
        EXPECT_THAT(menu.GreyedCommands(), ElementsAre(ID_SHOW_IN_FOLDER, ID_SAVE_RESULTS));
    });
    window.RightClickRow(kObjects, 0);
    window.SelectRow(kObjects, 0);
    ui.ExpectMenu(ID_SHOW_IN_FOLDER);
    window.Press("Shift+F10");
    EXPECT_EQ(Asked(), "show C:\\x\\one\n");

    source->accounts.names = {"Users"};
    window.ChooseMenu(IDP_FIRST_RESULT_PAGE + 1);
    EXPECT_TRUE(window.WaitUntil([&] { return window.Rows(kAccounts).size() == 1; }));
    EXPECT_FALSE(window.IsVisible(kObjects));
    window.SelectRow(kAccounts, 0);
    window.Press("Return");  // an account is no object
    EXPECT_EQ(Asked(), "");
    window.SelectItem(IDC_RESULTS_PAGE, "Objects");
    EXPECT_TRUE(window.IsVisible(kObjects));
}

TEST_F(ResultsFrameTest, ANarrowBarKeepsItsButtonsInReach) {
    ResultsBar bar;
    ASSERT_TRUE(main.LoadFrame(IDR_MAIN_FRAME) && bar.Create(main, IDD_RESULTS_BAR));
    bar.ShowWindow(SW_SHOW);
    int before = 0;
    for (const int width : {420, 700}) {
        main.SetPlacement({{0, 0, width, 300}, ShowState::kNormal});
        EXPECT_TRUE(UiDriver::MainWindow().WaitUntil([&] { return bar.GetClientRect().right == width; }));
        const Rect last = bar.GetDlgItem(ID_STOP_RESULTS)->GetWindowRect();
        EXPECT_LE(last.right, bar.GetWindowRect().right);
        const int choice = bar.GetDlgItem(IDC_RESULTS_PAGE)->GetWindowRect().Width();
        EXPECT_GT(choice, before);
        before = choice;
    }
    main.DestroyWindow();
}

TEST_F(ResultsFrameTest, EscapeStopsTheWorker) {
    WindowDriver window = Open({"one"});
    window.Press("Esc");
    EXPECT_TRUE(window.WaitUntil([&] { return !window.IsEnabled(ID_STOP_RESULTS); }));
    EXPECT_TRUE(source->wasStopped);
    window.Press("Esc");  // nothing is lost
    window.Press("Ctrl+W");
    EXPECT_TRUE(window.WaitUntil([&] { return !window.IsOpen(); }));
}

// Neither waits for a worker that goes on.
TEST_F(ResultsFrameTest, ClosingStopsTheWorker) {
    WindowDriver window = Open({});
    window.ClickCloseBox();
    EXPECT_TRUE(window.WaitUntil([&] { return !window.IsOpen(); }));
    WindowDriver other = Open({});
    other.Click(ID_STOP_RESULTS);
    EXPECT_TRUE(other.WaitUntil([&] { return source->wasStopped.load(); }));
    windows.CloseAll();
    other = Open({});
    windows.CloseAll();
    EXPECT_FALSE(other.IsOpen());
}

}  // namespace
}  // namespace permora
