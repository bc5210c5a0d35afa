#include "app/help_window.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "app/program_folder.h"
#include "browser/shell_items.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/sequential_file.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

#include "app/help_topics.h"

namespace permora {
namespace {

bool IsPageName(const std::string& name) {
    constexpr std::string_view kEnding = ".html";
    const std::string_view stem =
        std::string_view(name).substr(0, name.size() - std::min(name.size(), kEnding.size()));
    return name.ends_with(kEnding) && !stem.empty() && std::ranges::all_of(stem, [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
           });
}

void Remove(const std::string& element, std::string& page) {
    const std::string end = "</" + element + '>';
    const std::size_t from = page.find('<' + element);
    const std::size_t to = page.find(end);
    if (from != page.npos && to != page.npos && from < to) page.erase(from, to + end.size() - from);
}

bool LeadsToTheWeb(const std::string& address) {
    return address.starts_with("https:") || address.starts_with("http:") || address.starts_with("mailto:");
}

}  // namespace

std::optional<std::string> ReadHelpPage(const std::string& folder, const std::string& name) {
    constexpr std::size_t kLongest = std::size_t{1} << 20;
    SequentialFile file;
    if (!IsPageName(name) || SequentialFile::Open(folder + name, file) != ERROR_SUCCESS) return std::nullopt;
    std::string page;
    std::array<char, 16384> block{};
    std::size_t count = 0;
    do {
        if (file.Read(block, count) != ERROR_SUCCESS || page.size() > kLongest) return std::nullopt;
        page.append(block.data(), count);
    } while (count > 0);
    Remove("header", page);
    Remove("footer", page);
    return page;
}

CHelpWindow::CHelpWindow(CWnd* mainWindow, const std::string& programFolder)
    : CDialog(IDD_HELP, mainWindow), folder(programFolder + R"(\help\)") {}

const MessageMap& CHelpWindow::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CHelpWindow>(
        CDialog::GetMessageMap(), {
                                      {IDC_HELP_BACK, Notify::kClicked, &CHelpWindow::GoBack},
                                      {IDC_HELP_FORWARD, Notify::kClicked, &CHelpWindow::GoForward},
                                      {IDC_HELP_CONTENTS, Notify::kClicked, &CHelpWindow::ShowContents},
                                  });
    return kMap;
}

CPageView* CHelpWindow::Page() const {
    return GetDlgItem<CPageView>(IDC_HELP_PAGE);
}

bool CHelpWindow::OnInitDialog() {
    CPageView& page = *Page();
    page.onRead = [this](const std::string& name) { return ReadHelpPage(folder, name); };
    page.onShown = [this] { ShowWays(); };
    page.onAddress = [this](const std::string& address) {
        if (LeadsToTheWeb(address) && !OpenByShell(GetSafeHwnd(), address))
            ShowErrorBox(GetSafeHwnd(), ("Error: cannot open \"" + address + '"').c_str());
    };
    ShowWays();
    return true;
}

bool CHelpWindow::Show(const std::string& place) {
    if (!HasWindow() && !Create()) return false;
    CPageView& page = *Page();
    if (!page.Show(place)) return false;
    ShowBeside();
    page.SetFocus();
    return true;
}

void CHelpWindow::OnCancel() {
    ShowWindow(SW_HIDE);
}

void CHelpWindow::GoBack() {
    Page()->GoBack();
}

void CHelpWindow::GoForward() {
    Page()->GoForward();
}

void CHelpWindow::ShowContents() {
    Page()->Show(kHelpContents);
}

// A button that was pressed keeps the focus only while it can be pressed again.
void CHelpWindow::ShowWays() {
    const auto enable = [this](unsigned int id, bool isEnabled) {
        CWnd* button = GetDlgItem(id);
        if (button->IsWindowEnabled() == isEnabled) return;
        if (button->HasFocus()) Page()->SetFocus();
        button->EnableWindow(isEnabled);
    };
    enable(IDC_HELP_BACK, Page()->CanGoBack());
    enable(IDC_HELP_FORWARD, Page()->CanGoForward());
}

}  // namespace permora
