#include "tests/support/ui_driver.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <optional>
#include <vector>

#include "framework/file_operation_ids.h"
#include "framework/native.h"
#include "tests/support/patience.h"
#include "tests/support/ui_backend.h"

namespace permora::test {
namespace {

// In milliseconds: how long a window may stay open after its script, and how long one that was told to close
// may take before the program is ended, since it would hang. What it waits for may be a busy disk.
constexpr int kTimeToStay = static_cast<int>(std::chrono::milliseconds(kPatience).count());
constexpr int kTimeToClose = kTimeToStay;

// The bits of a message box's type that tests look at: buttons and icon.
constexpr UINT kTypeMask = 0xFF;

struct Expectation {
    ModalKind kind = ModalKind::kDialog;
    unsigned int templateId = 0;
    TextMatcher title = ::testing::_;
    TextMatcher text = ::testing::_;
    UINT type = 0;
    UiDriver::Script script;
    int answer = 0;  // button or command

    bool Matches(const ModalWindow& modal) const {
        return modal.kind == kind && modal.templateId == templateId && modal.type == (type & kTypeMask) &&
               title.Matches(modal.title) && text.Matches(modal.text);
    }
};

Expectation MessageBoxWith(const TextMatcher& text, const TextMatcher& caption, UINT type) {
    Expectation expectation;
    expectation.kind = ModalKind::kMessageBox;
    expectation.text = text;
    expectation.title = caption;
    expectation.type = type;
    return expectation;
}

void PrintMatcher(std::ostream& out, const char* what, const TextMatcher& matcher) {
    out << ' ' << what << ' ';
    matcher.DescribeTo(&out);
}

std::ostream& operator<<(std::ostream& out, const Expectation& expected) {
    switch (expected.kind) {
        case ModalKind::kDialog:
            return out << "dialog " << expected.templateId;
        case ModalKind::kSheet:
            out << "sheet whose title ";
            expected.title.DescribeTo(&out);
            return out;
        case ModalKind::kMessageBox:
            out << "message box of type " << (expected.type & kTypeMask);
            PrintMatcher(out, "whose text", expected.text);
            PrintMatcher(out, "and caption", expected.title);
            return out;
        case ModalKind::kMenu:
            return out << "menu to choose command " << expected.answer << " from";
    }
    return out;
}

std::string Describe(const ModalWindow& modal) {
    switch (modal.kind) {
        case ModalKind::kDialog:
            return "dialog " + std::to_string(modal.templateId) + " " + WindowDriver(modal.window).Describe();
        case ModalKind::kSheet:
            return "sheet " + WindowDriver(modal.window).Describe();
        case ModalKind::kMessageBox:
            return "message box of type " + std::to_string(modal.type) + " \"" + modal.title + "\": \"" +
                   modal.text + "\"";
        case ModalKind::kMenu:
            break;
    }
    return "menu " + WindowDriver(modal.window).Describe();
}

std::string DescribeOpenWindows() {
    std::string all;
    for (HWND window : OpenWindows())
        all += "\n  " + WindowDriver(window).Describe();
    return all.empty() ? " none" : all;
}

// A window that does not go would hang the program for good.
void CloseOrEnd(HWND window) {
    CloseSafely(window);
    PostLater(kTimeToClose, [window] {
        if (!IsOpen(window)) return;
        std::printf("cannot be closed, so the tests end here: %s\n", WindowDriver(window).Describe().c_str());
        std::fflush(stdout);
        std::_Exit(EXIT_FAILURE);
    });
}

}  // namespace

struct UiDriver::State : std::enable_shared_from_this<State> {
    // The test's declarations, and above them those of each running script.
    std::vector<std::deque<Expectation>> declared{1};

    void Declare(Expectation expectation) { declared.back().push_back(std::move(expectation)); }
    std::deque<Expectation>* Next();
    bool IsChanceWindow(const ModalWindow& modal);
    std::optional<Expectation> Take(const ModalWindow& modal);
    void OnShown(const ModalWindow& modal);
    void Serve(const ModalWindow& modal, const Expectation& expectation);
    void RunScript(const ModalWindow& modal, const Expectation& expectation);
    void WatchClosing(HWND window);
};

std::deque<Expectation>* UiDriver::State::Next() {
    const auto found =
        std::find_if(declared.rbegin(), declared.rend(), [](const auto& level) { return !level.empty(); });
    return found != declared.rend() ? &*found : nullptr;
}

std::optional<Expectation> UiDriver::State::Take(const ModalWindow& modal) {
    auto* next = Next();
    if (next == nullptr) {
        ADD_FAILURE() << "undeclared " << Describe(modal);
        return std::nullopt;
    }
    if (!next->front().Matches(modal)) {
        ADD_FAILURE() << "undeclared " << Describe(modal) << "\n  declared next: " << next->front();
        return std::nullopt;
    }
    Expectation expectation = std::move(next->front());
    next->pop_front();
    return expectation;
}

// The time of a file operation, and so whether its window comes, depends on the machine.
bool UiDriver::State::IsChanceWindow(const ModalWindow& modal) {
    const auto* next = Next();
    return modal.kind == ModalKind::kDialog && modal.templateId == kProgressWindowId &&
           (next == nullptr || !next->front().Matches(modal));
}

void UiDriver::State::OnShown(const ModalWindow& modal) {
    if (IsChanceWindow(modal)) return;
    auto expectation = Take(modal);
    if (!expectation) {
        PostToUiThread([window = modal.window] { CloseOrEnd(window); });
        return;
    }
    PostToUiThread([weak = weak_from_this(), modal, expected = std::move(*expectation)] {
        if (const auto self = weak.lock()) self->Serve(modal, expected);
    });
}

void UiDriver::State::Serve(const ModalWindow& modal, const Expectation& expectation) {
    // A dialog without a script is given no input. It may never take any: a message box can already stand
    // before it, and that one is served only when this function has returned.
    const bool isGivenInput =
        expectation.script || modal.kind == ModalKind::kMessageBox || modal.kind == ModalKind::kMenu;
    const bool takesInput = isGivenInput && WaitForInput(modal.window);
    switch (modal.kind) {
        case ModalKind::kMessageBox:
            if (takesInput && expectation.script) RunScript(modal, expectation);
            if (takesInput && !expectation.script) ChooseButton(modal.window, expectation.answer);
            break;
        case ModalKind::kMenu:
            if (takesInput && expectation.script) RunScript(modal, expectation);
            if (takesInput) ChooseCommand(modal.window, static_cast<unsigned int>(expectation.answer));
            break;
        default:
            if (expectation.script && !takesInput)
                ADD_FAILURE() << "closed before its script could run: " << expectation;
            if (expectation.script && takesInput) RunScript(modal, expectation);
            break;
    }
    WatchClosing(modal.window);
}

void UiDriver::State::RunScript(const ModalWindow& modal, const Expectation& expectation) {
    std::ostringstream name;
    name << "in " << expectation;
    const ::testing::ScopedTrace trace(__FILE__, __LINE__, name.str());
    declared.emplace_back();
    WindowDriver driver(modal.window);
    expectation.script(driver);
    // The remaining declarations come next.
    std::deque<Expectation> left = std::move(declared.back());
    declared.pop_back();
    auto& outer = declared.back();
    outer.insert(outer.begin(), std::make_move_iterator(left.begin()), std::make_move_iterator(left.end()));
}

void UiDriver::State::WatchClosing(HWND window) {
    PostLater(kTimeToStay, [weak = weak_from_this(), window] {
        const auto self = weak.lock();
        if (!self || !IsOpen(window)) return;
        if (self->declared.size() > 1) {  // another window's script runs meanwhile
            self->WatchClosing(window);
            return;
        }
        ADD_FAILURE() << "still open: " << WindowDriver(window).Describe()
                      << "\nopen windows:" << DescribeOpenWindows();
        CloseOrEnd(window);
    });
}

UiDriver::UiDriver() : state(std::make_shared<State>()) {
    WatchModalWindows([this](const ModalWindow& modal) { state->OnShown(modal); });
}

UiDriver::~UiDriver() {
    WatchModalWindows(nullptr);
    for (const auto& level : state->declared)
        for (const Expectation& expectation : level)
            ADD_FAILURE() << "declared, but did not come: " << expectation;
}

void UiDriver::ExpectDialog(unsigned int templateId, Script script) {
    Expectation expectation;
    expectation.kind = ModalKind::kDialog;
    expectation.templateId = templateId;
    expectation.script = std::move(script);
    state->Declare(std::move(expectation));
}

void UiDriver::ExpectSheet(const TextMatcher& title, Script script) {
    Expectation expectation;
    expectation.kind = ModalKind::kSheet;
    expectation.title = title;
    expectation.script = std::move(script);
    state->Declare(std::move(expectation));
}

void UiDriver::ExpectMessageBox(const TextMatcher& text, const TextMatcher& caption, UINT type, int answer) {
    Expectation expectation = MessageBoxWith(text, caption, type);
    expectation.answer = answer;
    state->Declare(std::move(expectation));
}

void UiDriver::ExpectMessageBox(const TextMatcher& text, const TextMatcher& caption, UINT type,
                                Script script) {
    Expectation expectation = MessageBoxWith(text, caption, type);
    expectation.script = std::move(script);
    state->Declare(std::move(expectation));
}

void UiDriver::ExpectError(const TextMatcher& text) {
    ExpectMessageBox(text, "Permora Error", MB_OK | MB_ICONERROR, IDOK);
}

void UiDriver::ExpectInformation(const TextMatcher& text) {
    ExpectMessageBox(text, "Permora Information", MB_OK | MB_ICONINFORMATION, IDOK);
}

void UiDriver::ExpectMenu(unsigned int command) {
    Expectation expectation;
    expectation.kind = ModalKind::kMenu;
    expectation.answer = static_cast<int>(command);
    state->Declare(std::move(expectation));
}

void UiDriver::ExpectMenu(Script script) {
    Expectation expectation;
    expectation.kind = ModalKind::kMenu;
    expectation.script = std::move(script);
    state->Declare(std::move(expectation));
}

WindowDriver UiDriver::MainWindow() {
    const std::vector<HWND> frames = OpenFrames();
    if (frames.size() != 1) ADD_FAILURE() << "not exactly one frame is open:" << DescribeOpenWindows();
    return WindowDriver(frames.empty() ? nullptr : frames.front());
}

WindowDriver UiDriver::WindowTitled(const TextMatcher& title) {
    for (const HWND frame : OpenFrames())
        if (title.Matches(WindowDriver(frame).Title())) return WindowDriver(frame);
    ADD_FAILURE() << "no window of that title is open:" << DescribeOpenWindows();
    return WindowDriver(nullptr);
}

}  // namespace permora::test
