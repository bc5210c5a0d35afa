// Pages of help in the system's rich edit control, which is given text in different looks and fetches
// nothing.
#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "framework/page_native.h"
#include "framework/page_text.h"
#include "framework/styles.h"
#include "framework/win32/controls.h"
#include "framework/win32/window.h"

#include <richedit.h>

namespace permora::win32 {
namespace {

constexpr LONG kTwipsPerPoint = 20;
constexpr int kIndent = 18;      // logical pixels: of what stands below a term, and of an item's text
constexpr int kCellWidth = 150;  // logical pixels: of a row's first cell

const wchar_t* RichEditClass() {
    static const HMODULE kLibrary = LoadLibraryExW(L"msftedit.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    return kLibrary != nullptr ? MSFTEDIT_CLASS : nullptr;
}

struct Place {
    std::string page;
    std::string name;  // in the page; empty: its beginning
};

Place PlaceOf(const std::string& address) {
    const std::size_t hash = address.find('#');
    return {address.substr(0, hash), hash != address.npos ? address.substr(hash + 1) : std::string()};
}

struct Link {
    CHARRANGE range{};
    std::string address;
};

class PageWindow final : public SystemWindow<NativePage> {
  public:
    PageWindow(CPageView& shown, CWnd& parent, const ControlSpec& spec)
        : SystemWindow(shown, spec.rect), view(shown) {
        Adopt(MakeChild(parent,
                        {.className = RichEditClass(),
                         .style = (spec.style & ~DWORD{WS_BORDER}) | ES_MULTILINE | ES_READONLY |
                                  ES_NOHIDESEL | WS_VSCROLL,
                         .extendedStyle = WS_EX_CLIENTEDGE,
                         .rect = spec.rect},
                        spec.id, {}));
        Ask(EM_SETEVENTMASK, 0, ENM_LINK);
    }

    bool Show(const std::string& place) override;
    void GoBack() override { GoTo(at - 1); }
    void GoForward() override { GoTo(at + 1); }
    bool CanGoBack() const override { return at > 0; }
    bool CanGoForward() const override { return at + 1 < visits.size(); }
    KeyUse OnDialogKey(UINT virtualKey) override;
    void OnOtherResolution() override {
        SystemWindow::OnOtherResolution();
        if (!visits.empty()) ShowVisit();
    }

  protected:
    LRESULT OnMessage(const Message& message) override;
    std::optional<LRESULT> OnReflected(const Message& message) override;

  private:
    struct Visit {
        Place place;
        LRESULT firstLine = 0;  // that was seen when another page came
    };

    LRESULT Ask(UINT question, WPARAM wide = 0, LPARAM wider = 0) const {
        return SendMessageW(Own(), question, wide, wider);
    }
    void GoTo(std::size_t visit);
    void ShowVisit();
    bool Fill(const std::string& page);
    void Add(const PageParagraph& paragraph);
    void Append(const std::string& text, const PageSpan& look, PageParagraph::Kind kind);
    void FormatLast(PageParagraph::Kind kind);
    void ScrollTo(LRESULT line) { Ask(EM_LINESCROLL, 0, line - Ask(EM_GETFIRSTVISIBLELINE)); }
    LONG End() const;
    void Follow(const std::string& address);
    const Link* LinkAt(LONG character) const;
    bool SelectNextLink(int direction);

    CPageView& view;
    std::vector<Visit> visits;
    std::size_t at = 0;
    std::vector<Link> links;
    std::map<std::string, LONG> names;  // where they begin
};

// ---- What is shown ----

LONG PageWindow::End() const {
    GETTEXTLENGTHEX question{GTL_DEFAULT, 1200};
    return static_cast<LONG>(Ask(EM_GETTEXTLENGTHEX, reinterpret_cast<WPARAM>(&question)));
}

void PageWindow::Append(const std::string& text, const PageSpan& look, PageParagraph::Kind kind) {
    using Kind = PageParagraph::Kind;
    constexpr LONG kPointsPerInch = 72;
    CHARRANGE end{End(), -1};
    Ask(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&end));
    CHARFORMAT2W format{};
    format.cbSize = sizeof format;
    format.dwMask = CFM_BOLD | CFM_ITALIC | CFM_SIZE | CFM_FACE | CFM_LINK | CFM_COLOR;
    const bool isBold = look.isBold || kind == Kind::kTerm || kind == Kind::kHeading || kind == Kind::kTitle;
    format.dwEffects = CFE_AUTOCOLOR | (isBold ? CFE_BOLD : 0U) | (look.isItalic ? CFE_ITALIC : 0U) |
                       (look.address.empty() ? 0U : CFE_LINK);
    LOGFONTW font{};
    GetObjectW(MessageFont(kLogicalDpi), sizeof font, &font);
    const LONG textPoints = MulDiv(-font.lfHeight, kPointsPerInch, kLogicalDpi);
    const LONG points = textPoints + (kind == Kind::kTitle ? 7 : kind == Kind::kHeading ? 3 : 0);
    format.yHeight = points * kTwipsPerPoint;
    lstrcpynW(format.szFaceName, look.isCode ? L"Consolas" : font.lfFaceName, LF_FACESIZE);
    Ask(EM_SETCHARFORMAT, SCF_SELECTION, reinterpret_cast<LPARAM>(&format));
    Ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(Wide(text).c_str()));
}

// Of the paragraph at the end.
void PageWindow::FormatLast(PageParagraph::Kind kind) {
    using Kind = PageParagraph::Kind;
    constexpr LONG kTwipsPerPixel = 1440 / static_cast<LONG>(kLogicalDpi);
    PARAFORMAT2 format{};
    format.cbSize = sizeof format;
    format.dwMask = PFM_STARTINDENT | PFM_OFFSET | PFM_TABSTOPS | PFM_SPACEBEFORE | PFM_SPACEAFTER;
    if (kind == Kind::kMeaning) format.dxStartIndent = kIndent * kTwipsPerPixel;
    if (kind == Kind::kItem) format.dxOffset = kIndent * kTwipsPerPixel;
    if (kind == Kind::kRow) format.dxOffset = kCellWidth * kTwipsPerPixel;
    if (format.dxOffset != 0) {
        format.cTabCount = 1;
        format.rgxTabs[0] = format.dxOffset;
    }
    const bool isLine = kind == Kind::kItem || kind == Kind::kRow || kind == Kind::kTerm;
    format.dySpaceAfter = (isLine ? 2 : 6) * kTwipsPerPoint;
    format.dySpaceBefore = kind == Kind::kHeading ? 10 * kTwipsPerPoint : 0;
    Ask(EM_SETPARAFORMAT, 0, reinterpret_cast<LPARAM>(&format));
}

void PageWindow::Add(const PageParagraph& paragraph) {
    for (const std::string& name : paragraph.names)
        names.emplace(name, End());
    if (paragraph.kind == PageParagraph::Kind::kItem) Append("\xe2\x80\xa2\t", {}, paragraph.kind);
    for (const PageSpan& span : paragraph.spans) {
        const LONG begin = End();
        Append(span.text, span, paragraph.kind);
        if (!span.address.empty()) links.push_back({{begin, End()}, span.address});
    }
    FormatLast(paragraph.kind);
    Append("\n", {}, PageParagraph::Kind::kText);
}

bool PageWindow::Fill(const std::string& page) {
    const auto html = view.onRead ? view.onRead(page) : std::nullopt;
    if (!html) return false;
    links.clear();
    names.clear();
    Ask(WM_SETREDRAW, FALSE);
    ::SetWindowTextW(Own(), L"");
    for (const PageParagraph& paragraph : ReadPage(*html))
        Add(paragraph);
    CHARRANGE beginning{0, 0};
    Ask(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&beginning));
    Ask(WM_SETREDRAW, TRUE);
    Invalidate();
    return true;
}

// ---- Ways ----

bool PageWindow::Show(const std::string& address) {
    Place wanted = PlaceOf(address);
    if (wanted.page.empty() && !visits.empty()) wanted.page = visits[at].place.page;
    const LRESULT firstLine = Ask(EM_GETFIRSTVISIBLELINE);
    if (!Fill(wanted.page)) return false;
    if (!visits.empty()) {
        visits[at].firstLine = firstLine;
        visits.resize(++at);
    }
    const auto name = names.find(wanted.name);
    const LRESULT line = name != names.end() ? Ask(EM_EXLINEFROMCHAR, 0, name->second) : 0;
    visits.push_back({std::move(wanted), line});
    ScrollTo(line);
    if (view.onShown) view.onShown();
    return true;
}

void PageWindow::GoTo(std::size_t visit) {
    if (visit >= visits.size()) return;
    visits[at].firstLine = Ask(EM_GETFIRSTVISIBLELINE);
    at = visit;
    ShowVisit();
    if (view.onShown) view.onShown();
}

void PageWindow::ShowVisit() {
    if (Fill(visits[at].place.page)) ScrollTo(visits[at].firstLine);
}

void PageWindow::Follow(const std::string& address) {
    const std::string wanted = address;  // it is a link's, which go with the page
    if (!Show(wanted) && view.onAddress) view.onAddress(wanted);
}

const Link* PageWindow::LinkAt(LONG character) const {
    const auto found = std::ranges::find_if(links, [character](const Link& link) {
        return character >= link.range.cpMin && character < link.range.cpMax;
    });
    return found != links.end() ? &*found : nullptr;
}

// After the selection, or before it. False at the end of the page.
bool PageWindow::SelectNextLink(int direction) {
    CHARRANGE selected{};
    Ask(EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selected));
    const Link* next = nullptr;
    for (const Link& link : links) {
        if (direction > 0 && link.range.cpMin >= selected.cpMax && next == nullptr) next = &link;
        if (direction < 0 && link.range.cpMax <= selected.cpMin) next = &link;
    }
    if (next == nullptr) return false;
    CHARRANGE range = next->range;
    Ask(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&range));
    Ask(EM_SCROLLCARET);
    return true;
}

// ---- What the user does ----

KeyUse PageWindow::OnDialogKey(UINT virtualKey) {
    if (virtualKey == VK_TAB && GetKeyState(VK_CONTROL) >= 0)
        return SelectNextLink(GetKeyState(VK_SHIFT) < 0 ? -1 : 1) ? KeyUse::kTaken : KeyUse::kDialog;
    if (virtualKey != VK_RETURN) return KeyUse::kDialog;
    CHARRANGE selected{};
    Ask(EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selected));
    const Link* link = LinkAt(selected.cpMin);
    if (link == nullptr) return KeyUse::kDialog;
    Follow(link->address);
    return KeyUse::kTaken;
}

LRESULT PageWindow::OnMessage(const Message& message) {
    if (message.code == WM_SYSKEYDOWN && (message.wide == VK_LEFT || message.wide == VK_RIGHT)) {
        message.wide == VK_LEFT ? GoBack() : GoForward();
        return 0;
    }
    return SystemWindow::OnMessage(message);
}

std::optional<LRESULT> PageWindow::OnReflected(const Message& message) {
    if (message.code != WM_NOTIFY) return std::nullopt;
    const auto& header = *reinterpret_cast<const NMHDR*>(message.wider);
    if (header.code != EN_LINK) return std::nullopt;
    const auto& event = *reinterpret_cast<const ENLINK*>(message.wider);
    const Link* link = event.msg == WM_LBUTTONUP ? LinkAt(event.chrg.cpMin) : nullptr;
    if (link != nullptr) Follow(link->address);
    return 0;
}

}  // namespace

std::unique_ptr<NativeWindow> MakePageView(CPageView& page, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<PageWindow>(page, parent, spec);
}

}  // namespace permora::win32
