// A picture of the dialog of the history with sample changes.
#include "tests/screenshots/history.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "framework/native.h"
#include "framework/qt/widget.h"
#include "history/history_dialog.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/nt/sddl.h"
#include "resources/resource_ids.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

StoredSecurity Stored(const char* sddl) {
    StoredSecurity stored{SecurityForm::kVolume, {}, {}};
    const auto descriptor = nt::FromSddl(sddl);
    if (!descriptor || !descriptor->AppendTo(stored.bytes)) std::abort();
    return stored;
}

void Add(History& history, ChangeKind kind, const char* top, const char* after, int count) {
    const std::unique_ptr<Change> change = history.Begin(kind);
    std::vector<DescriptorChange> batch;
    for (int i = 0; i < count; ++i)
        batch.push_back({"Reports\\Minutes & reports of March " + std::to_string(i) + ".odt", false,
                         1U + static_cast<unsigned>(i),
                         Stored("O:BAD:AI(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;OICIID;FA;;;SY)"),
                         Stored(after)});
    std::uint64_t number = 0;
    DWORD error = change->BeginTop({top, true, {1, 2, 3}}, number);
    if (error == ERROR_SUCCESS) error = change->Record(number, batch);
    if (error != ERROR_SUCCESS) {
        std::fprintf(stderr, "no sample history: error %u\n", static_cast<unsigned>(error));
        std::exit(EXIT_FAILURE);
    }
    change->End();
}

class ShownHistory : public CHistoryDlg {
  public:
    ShownHistory(const std::string& historyPath, const Series& where)
        : CHistoryDlg(historyPath, nullptr), series(where) {}

  protected:
    bool OnInitDialog() override {
        PostLater(kMillisecondsToShow, [this] {
            Save(*qt::WidgetOf(*this), std::to_string(IDD_HISTORY), series);
            EndDialog(IDCANCEL);
        });
        return CHistoryDlg::OnInitDialog();
    }

  private:
    const Series& series;
};

}  // namespace

void TakeHistoryPicture(const Series& series) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("history.db");
    std::unique_ptr<History> history;
    if (History::Open(path, history) != ERROR_SUCCESS) std::abort();
    Add(*history, ChangeKind::kOwner, R"(D:\Projects)",
        "O:SYD:AI(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;OICIID;FA;;;SY)", 3);
    Add(*history, ChangeKind::kReset, R"(D:\Archive\2026\Reports of all departments and their branches)",
        "O:BAD:AI(A;OICIID;FA;;;SY)", 1200);
    Add(*history, ChangeKind::kPermissions, R"(D:\Projects)",
        "O:BAD:P(D;;0x10000;;;BG)(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;BU)", 1234);
    history.reset();
    ShownHistory(path, series).DoModal();
}

}  // namespace permora
