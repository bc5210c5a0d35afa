#include "editor/effective_page.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "editor/account_picker.h"
#include "editor/compare_dialog.h"
#include "editor/explanation_dialog.h"
#include "editor/item_asking.h"
#include "editor/required_control.h"
#include "framework/long_work.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "platform/server_accounts.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "security/effective_rights.h"
#include "security/message_boxes.h"
#include "security/object_server.h"
#include "security/rights_comparison.h"
#include "security/rights_explanation.h"
#include "security/volume_asking.h"
#include "shares/network_rights.h"

namespace permora {
namespace {

constexpr const char* kAskExactly = "Ask &exactly";

constexpr int kNetworkRightsWidth = 600;

// What the dialog shows.
struct Explained {
    DWORD error = ERROR_SUCCESS;
    DWORD rights = 0;  // as the entries of the list make them
    std::vector<ExplanationRow> rows;
    std::vector<std::string> remarks;
};

Explained Explain(const HeldObject& object, PACL dacl, const AccountGroups& groups,
                  const std::vector<std::string>& network) {
    Explained explained;
    RightsExplanation explanation;
    explained.error = ExplainRights(object, dacl, groups, explanation);
    if (explained.error != ERROR_SUCCESS) return explained;
    explained.rights = explanation.rights;
    explained.rows = ExplanationRows(explanation, AccountDisplayName);
    for (const std::string& remark : RemarksOnExplanation(explanation, AccountDisplayName))
        explained.remarks.push_back(AsSentence(remark));
    explained.remarks.insert(explained.remarks.end(), network.begin(), network.end());
    explained.remarks.push_back(AsSentence(kNotExplained));
    return explained;
}

Outcome ReadListOfItem(const RememberedObject& item, HeldObject& object, ReadParts& list) {
    Outcome outcome = FindItem(item, object);
    if (outcome.IsDone()) outcome.code = object.ReadSecurity(DACL_SECURITY_INFORMATION, list);
    return outcome;
}

// The lists of items of one volume, as far as it gives them.
struct ListsOfVolume {
    struct List {
        ReadParts parts;
        std::string server;
    };
    std::vector<List> lists;
    std::string reason;  // why the others are not known: for one of them
};

Outcome ReadListsOfVolume(const std::vector<RememberedObject>& items, ListsOfVolume& found,
                          PatientWork::Running& running) {
    for (const RememberedObject& item : items) {
        if (running.isGivenUp) break;
        HeldObject object;
        ReadParts parts;
        const Outcome outcome = ReadListOfItem(item, object, parts);
        if (outcome.IsDone())
            found.lists.push_back({std::move(parts), ServerOfObject(object)});
        else if (found.reason.empty())
            found.reason = item.Path() + ": " + SystemMessageLine(outcome.code);
        ++running.done;
    }
    return {};
}

// The lists of all items. Returns why some are not known, or an empty text.
std::string ReadLists(CWnd& window, const RememberedPlace& place, RightsComparison& comparison) {
    std::string reason;
    for (const RememberedPlace& part : ByVolume(place)) {
        const auto find = [items = part.items](ListsOfVolume& found, PatientWork::Running& running) {
            return ReadListsOfVolume(items, found, running);
        };
        ListsOfVolume found;
        const Outcome outcome = FindOnVolume<ListsOfVolume>(window, part.volume, found, find);
        for (const ListsOfVolume::List& list : found.lists)
            comparison.AddObject(list.parts.dacl, list.server);
        for (std::size_t unread = found.lists.size(); unread < part.items.size(); ++unread)
            comparison.AddUnknownObject();
        if (reason.empty()) reason = outcome.IsDone() ? found.reason : LineText(outcome);
    }
    const std::string count = std::to_string(comparison.UnknownCount());
    return reason.empty() ? reason : "the lists of " + count + " objects cannot be read (" + reason + ")";
}

}  // namespace

// One question about an account, which a thread may answer that outlives the page.
struct CPage4::Inquiry {
    AccountRecord account;
    GroupsRequest request = GroupsRequest::kUsual;
    HeldObject object{};
    ReadParts parts{};
    DWORD error = ERROR_SUCCESS;
    EffectiveRights effective{};
    std::string remarks{};  // sentences on the rights, or on groups that are not known
    AccountGroups groups{};
    std::vector<std::string> network{};  // sentences

    void FindAnswer() {
        const std::string server = ServerOfObject(object);
        error = FindAccountGroupsAt(server, *account.sid, request, groups);
        if (error == ERROR_SUCCESS) error = CheckListOfServer(server, parts.dacl);
        // A second logon would take as long again, and may give other groups; and the system asks no server.
        if (error == ERROR_SUCCESS)
            error = request == GroupsRequest::kExact || !server.empty()
                        ? FindEffectiveRights(parts.dacl, groups, effective)
                        : FindEffectiveRights(parts.dacl, account, request, effective);
        if (error != ERROR_SUCCESS) {
            remarks = UnknownGroupsText(error, request, account);
            if (!remarks.empty()) remarks = AsSentence(remarks);
            return;
        }
        for (const std::string& remark : RemarksOnRights(parts.dacl, account, effective))
            remarks += (remarks.empty() ? "" : " ") + AsSentence(remark);
        if (!server.empty()) {
            network.push_back(AsSentence(kNotOfServer));
            return;
        }
        const NetworkAnswers answers = NetworkShares().RightsOf(object, groups);
        for (const std::string& remark : RemarksOnNetwork(answers, AccountDisplayName))
            network.push_back(AsSentence(remark));
        if (network.empty()) network.emplace_back("No share of this machine holds the object.");
    }
};

const MessageMap& CPage4::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage4>(CPropertyPage::GetMessageMap(),
                               {
                                   {IDC_CHANGE_EFFECTIVE_ACCOUNT, Notify::kClicked, &CPage4::OnChangeAccount},
                                   {IDC_EXACT_GROUPS, Notify::kClicked, &CPage4::OnAskExactly},
                                   {IDC_EXPLAIN_RIGHTS, Notify::kClicked, &CPage4::OnExplain},
                                   {IDC_COMPARE_ACCOUNTS, Notify::kClicked, &CPage4::OnCompare},
                               });
    return kMap;
}

CPage4::CPage4() : CPropertyPage(IDD_EFFECTIVE_PERMISSIONS_PAGE, IDS_EFFECTIVE_PERMISSIONS_TAB) {}

bool CPage4::OnInitDialog() {
    CListCtrl& list = RightsList();
    (void)AccountField();  // must be there
    list.SetExtendedStyle(ListStyle::kCheckBoxes | ListStyle::kFixedMarks);
    NetworkList().InsertColumn(0, "Over the network", kNetworkRightsWidth);
    NetworkList().SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    for (const AccessRight& right : kAccessRights)
        list.InsertItem(list.GetItemCount(), right.listName);
    OfferExactGroups(GroupsOrigin::kThisMachine);
    GetDlgItem(IDC_EXPLAIN_RIGHTS)->EnableWindow(false);  // until there are marks
    remarks.clear();
    news.Start([this] {
        // Empty until an account is chosen, whatever was chosen before.
        if (!AccountField().GetWindowText().empty()) AccountField().SetWindowText(AccountNameSoFar(account));
    });
    return CPropertyPage::OnInitDialog();
}

void CPage4::OnDestroy() {
    exactly.Forget();
    news.Stop();
    CPropertyPage::OnDestroy();
}

// On failure, the previous account and its marks stay.
void CPage4::OnChangeAccount() {
    CDlgUsersAndGroups picker(this);
    picker.item = place->items.front();
    if (picker.DoModal() != IDOK) return;
    StopAsking();
    Inquiry inquiry{.account = picker.result};
    if (!ReadList(inquiry)) return;
    DoLongWork(*this, [&] { inquiry.FindAnswer(); });
    if (ShowAnswer(inquiry)) AccountField().SetWindowText(AccountNameSoFar(account));
}

// A logon takes a moment, or ten seconds where the domain is slow: the page can be used meanwhile.
void CPage4::OnAskExactly() {
    if (exactly.IsAsking()) {
        StopAsking();
        return;
    }
    const auto inquiry = std::make_shared<Inquiry>(Inquiry{account, GroupsRequest::kExact});
    if (!ReadList(*inquiry)) return;
    const DWORD error = exactly.Ask([inquiry] { inquiry->FindAnswer(); },
                                    [this, inquiry] {
                                        StopAsking();
                                        ShowAnswer(*inquiry);
                                    });
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        return;
    }
    ExactButton().SetWindowText("&Stop");
    ShowRemarks("Asking which groups a logon of " + AccountNameSoFar(account) + " gives now...");
}

// The list may have changed since: the marks are found anew, so that they are what is explained.
void CPage4::OnExplain() {
    StopAsking();
    Inquiry inquiry{.account = account, .request = request};
    Explained explained;
    if (!ReadList(inquiry)) return;
    DoLongWork(*this, [&] {
        inquiry.FindAnswer();
        if (inquiry.error == ERROR_SUCCESS)
            explained = Explain(inquiry.object, inquiry.parts.dacl, inquiry.groups, inquiry.network);
    });
    if (!ShowAnswer(inquiry)) return;
    if (explained.error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), explained.error);
        return;
    }
    if (explained.rights != inquiry.effective.rights) {
        ShowErrorBox(GetSafeHwnd(),
                     "The system reports other rights than follow from the entries of the list, so they "
                     "cannot be explained.");
        return;
    }
    CExplanationDlg dialog(this);
    dialog.account = AccountNameSoFar(account);
    dialog.rows = std::move(explained.rows);
    dialog.remarks = std::move(explained.remarks);
    dialog.DoModal();
}

void CPage4::OnCompare() {
    StopAsking();
    RightsComparison comparison(request);
    CCompareAccountsDlg dialog(comparison, this);
    const bool isChosen = !AccountField().GetWindowText().empty();
    dialog.unread = ReadLists(*this, *place, comparison);
    if (isChosen) DoLongWork(*this, [&] { comparison.AddAccount(account); });
    dialog.DoModal();
}

void CPage4::StopAsking() {
    exactly.Forget();
    ExactButton().SetWindowText(kAskExactly);
    ShowRemarks(remarks);
}

void CPage4::OfferExactGroups(GroupsOrigin origin) {
    const bool isOffered = MayAskForExactGroups() && origin != GroupsOrigin::kThisMachine;
    ExactButton().ShowWindow(isOffered ? SW_SHOW : SW_HIDE);
}

bool CPage4::ReadList(Inquiry& inquiry) {
    const RememberedObject& item = place->items.front();
    struct Read {
        HeldObject object;
        ReadParts parts;
    };
    const auto find = [item](Read& found, PatientWork::Running&) {
        return ReadListOfItem(item, found.object, found.parts);
    };
    Read read;
    const Outcome outcome = FindOnVolume<Read>(*this, VolumeOfItem(*place, item), read, find);
    ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return false;
    inquiry.object = std::move(read.object);
    inquiry.parts = std::move(read.parts);
    if (inquiry.parts.dacl != nullptr) return true;
    ShowInfoBox(GetSafeHwnd(), "Object's access control list is null (All access is allowed always)");
    return false;
}

bool CPage4::ShowAnswer(Inquiry& inquiry) {
    if (inquiry.error != ERROR_SUCCESS) {
        if (inquiry.remarks.empty())
            ShowSystemErrorBox(GetSafeHwnd(), inquiry.error);
        else
            ShowErrorBox(GetSafeHwnd(), inquiry.remarks.c_str());
        return false;
    }
    int row = 0;
    for (const AccessRight& right : kAccessRights)
        RightsList().SetCheck(row++, IsEffective(right, inquiry.effective.rights));
    account = inquiry.account;
    request = inquiry.request;
    GetDlgItem(IDC_EXPLAIN_RIGHTS)->EnableWindow(true);
    remarks = inquiry.remarks;
    ShowRemarks(remarks);
    NetworkList().DeleteAllItems();
    for (const std::string& sentence : inquiry.network)
        NetworkList().InsertItem(NetworkList().GetItemCount(), sentence);
    OfferExactGroups(inquiry.effective.origin);
    return true;
}

void CPage4::ShowRemarks(const std::string& text) {
    RequiredControl<CWnd>(*this, IDC_EFFECTIVE_REMARK).SetWindowText(text);
}

CButton& CPage4::ExactButton() const {
    return RequiredControl<CButton>(*this, IDC_EXACT_GROUPS);
}

CListCtrl& CPage4::RightsList() const {
    return RequiredControl<CListCtrl>(*this, IDC_EFFECTIVE_RIGHTS);
}

CListCtrl& CPage4::NetworkList() const {
    return RequiredControl<CListCtrl>(*this, IDC_NETWORK_RIGHTS);
}

CEdit& CPage4::AccountField() const {
    return RequiredControl<CEdit>(*this, IDC_EFFECTIVE_ACCOUNT);
}

}  // namespace permora
