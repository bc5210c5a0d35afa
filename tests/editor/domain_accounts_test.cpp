// The editor's windows with accounts of a domain that answers late, in part or not at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "editor/account_picker.h"
#include "resources/resource_ids.h"
#include "tests/editor/editor_fixture.h"
#include "tests/support/effort.h"
#include "tests/support/fake_domain.h"
#include "tests/support/thread_time.h"

namespace permora {
namespace {

using test::FakeDomain;
using test::UiDriver;
using test::WindowDriver;
using test::WorkOfThisThread;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

constexpr unsigned kAnna = 1103;
constexpr unsigned kEngineering = 1107;

class PickerInDomain : public testing::Test {
  protected:
    PickerInDomain() {
        domain.Add(kAnna, "anna");
        domain.Add(kEngineering, "Engineering", SidTypeGroup);
        domain.Add(1112, "WS1$", SidTypeComputer);
    }

    int Run(const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, script);
        return picker.DoModal();
    }
    static void AwaitState(WindowDriver& window, const std::string& beginning) {
        EXPECT_TRUE(window.WaitUntil([&] { return window.Text(IDC_SEARCH_STATE).starts_with(beginning); }))
            << window.Text(IDC_SEARCH_STATE);
    }
    static std::string CountOf(WindowDriver& window) {
        return std::to_string(window.Rows(IDC_FOUND_ACCOUNTS).size()) + " accounts";
    }

    FakeDomain domain;
    UiDriver ui;
    CDlgUsersAndGroups picker;
};

TEST_F(PickerInDomain, ShowsRowsWhileTheSearchRuns) {
    domain.HoldAnswers(true);
    Run([&](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_SEARCH_STATE), "");
        EXPECT_FALSE(window.IsVisible(IDC_STOP_SEARCH));
        window.Click(IDC_FIND_ACCOUNTS);
        EXPECT_TRUE(window.WaitUntil([&] {
            return testing::Matches(IsSupersetOf({"anna | EXAMPLE | User", "Engineering | EXAMPLE | Group"}))(
                window.Rows(IDC_FOUND_ACCOUNTS));
        }));
        EXPECT_THAT(window.Text(IDC_SEARCH_STATE),
                    AllOf(StartsWith("Searching the domain: "), EndsWith(CountOf(window) + " so far")));
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS), Contains(StartsWith("Everyone | ")));
        EXPECT_TRUE(window.IsVisible(IDC_STOP_SEARCH));
        domain.HoldAnswers(false);
        EXPECT_TRUE(window.WaitUntil([&] { return window.Text(IDC_SEARCH_STATE) == CountOf(window); }));
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS), Contains("WS1$ | EXAMPLE | Computer"));
        EXPECT_EQ(window.Text(IDC_SEARCH_STATE), CountOf(window));
        EXPECT_FALSE(window.IsVisible(IDC_STOP_SEARCH));
        window.Press("Esc");
    });
}

TEST_F(PickerInDomain, WhatIsTypedFiltersAndARowThatIsChosenDoesNot) {
    Run([&](WindowDriver& window) {
        window.SetText(IDC_ACCOUNT_NAME, "ANNA");
        EXPECT_TRUE(window.Rows(IDC_FOUND_ACCOUNTS).empty()) << "before the first search";
        window.Click(IDC_FIND_ACCOUNTS);
        AwaitState(window, "1 account");
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS), ElementsAre("anna | EXAMPLE | User"));
        window.SetText(IDC_ACCOUNT_NAME, "example\\");
        EXPECT_TRUE(window.WaitUntil([&] { return window.Rows(IDC_FOUND_ACCOUNTS).size() == 3; }));
        AwaitState(window, "3 accounts");
        window.SelectRow(IDC_FOUND_ACCOUNTS, window.FindRow(IDC_FOUND_ACCOUNTS, "Engineering"));
        EXPECT_EQ(window.Text(IDC_ACCOUNT_NAME), "EXAMPLE\\Engineering");
        EXPECT_EQ(window.Rows(IDC_FOUND_ACCOUNTS).size(), 3U);
        window.Press("Return");
    });
    EXPECT_EQ(picker.result.GetSidText(), FakeDomain::SidText(kEngineering));
}

TEST_F(PickerInDomain, WhatIsTypedListsPeopleFirstAndHeadersSort) {
    domain.Add(1120, "ben");
    domain.Add(1121, "Bench", SidTypeGroup);
    domain.Add(1122, "BENE");
    Run([&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        EXPECT_TRUE(window.WaitUntil([&] { return window.Text(IDC_SEARCH_STATE) == CountOf(window); }));
        domain.HoldAnswers(true);  // what has been found is enough
        window.SetText(IDC_ACCOUNT_NAME, "le\\BEN");
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS),
                    ElementsAre("ben | EXAMPLE | User", "BENE | EXAMPLE | User", "Bench | EXAMPLE | Group"));
        EXPECT_EQ(window.Text(IDC_SEARCH_STATE), "3 accounts");
        window.SelectRow(IDC_FOUND_ACCOUNTS, 1);
        window.ClickHeader(IDC_FOUND_ACCOUNTS, 0);
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS),
                    ElementsAre("ben | EXAMPLE | User", "Bench | EXAMPLE | Group", "BENE | EXAMPLE | User"));
        EXPECT_THAT(window.SelectedRows(IDC_FOUND_ACCOUNTS), ElementsAre(2)) << "the same account";
        window.ClickHeader(IDC_FOUND_ACCOUNTS, 0);
        window.ClickHeader(IDC_FOUND_ACCOUNTS, 1);
        window.ClickHeader(IDC_FOUND_ACCOUNTS, 1);
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS).front(), StartsWith("BENE"));
        EXPECT_EQ(window.Text(IDC_ACCOUNT_NAME), "EXAMPLE\\BENE");
        window.Press("Esc");
    });
    domain.HoldAnswers(false);
}

TEST_F(PickerInDomain, AccountsOfOneNameAreToldApartAndTheRightOneIsTaken) {
    domain.Add(1120, "anna", SidTypeAlias);
    Run([&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        EXPECT_TRUE(window.WaitUntil([&] { return window.Text(IDC_SEARCH_STATE) == CountOf(window); }));
        const std::string group = "anna (" + FakeDomain::SidText(1120) + ")";
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS),
                    IsSupersetOf({"anna (" + FakeDomain::SidText(kAnna) + ") | EXAMPLE | User",
                                  group + " | EXAMPLE | Alias"}));
        window.SelectRow(IDC_FOUND_ACCOUNTS, window.FindRow(IDC_FOUND_ACCOUNTS, group));
        window.Press("Return");
    });
    EXPECT_EQ(picker.result.GetSidText(), FakeDomain::SidText(1120));
}

TEST_F(PickerInDomain, StoppingKeepsTheRowsAndSaysThatTheyMayNotBeAll) {
    domain.HoldAnswers(true);
    Run([&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        AwaitState(window, "Searching");
        window.WaitUntil([&] { return domain.IsSearching(); });
        window.Click(IDC_STOP_SEARCH);
        AwaitState(window, "Stopped: there may be more than these ");
        EXPECT_FALSE(domain.IsSearching());
        EXPECT_FALSE(window.IsVisible(IDC_STOP_SEARCH));
        EXPECT_EQ(window.FocusedControl(), IDC_ACCOUNT_NAME + 0U);
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS), Contains("anna | EXAMPLE | User"));
        window.Click(IDC_FIND_ACCOUNTS);
        window.WaitUntil([&] { return domain.IsSearching(); });
        window.Press("Esc");
    });
    EXPECT_FALSE(domain.IsSearching()) << "closing ends the search";
}

TEST_F(PickerInDomain, AListThatIsNotWholeSaysSo) {
    domain.EndSearchesWith(kDomainOffline);
    domain.SetState(DomainAvailability::kOffline);
    Run([&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        AwaitState(window, "The accounts of EXAMPLE are missing: ");
        window.Press("Esc");
    });
}

TEST_F(PickerInDomain, ANameThatIsNotResolvedIsNeverTaken) {
    domain.EndLookupsWith(kAmbiguousName);
    Run([&](WindowDriver& window) {
        window.SetText(IDC_ACCOUNT_NAME, "anna");
        ui.ExpectError(
            "anna: this machine and its domain both have an account of that name. Write whose it is, such as "
            "EXAMPLE\\name.");
        window.Press("Return");
        for (const DWORD error : {kDomainOffline, kNameNotYet}) {
            domain.EndLookupsWith(error);
            ui.ExpectError("anna: the domain EXAMPLE does not answer, so the name cannot be looked up.");
            window.Press("Return");
        }
        window.Press("Esc");
    });
    EXPECT_FALSE(picker.result.sid);
}

// As many as a large domain has; no turn of the window takes longer than a user notices. What other programs
// do to this one's caches only adds to its work, so one search in which it is quick is enough.
TEST_F(PickerInDomain, TakesInputWhileTensOfThousandsOfRowsCome) {
    constexpr int kMostTries = 3;
    constexpr std::chrono::milliseconds kNoticed(100);
    for (unsigned number = 0; number < 50'000; ++number)
        domain.Add(10'000 + number, "person" + std::to_string(number));
    std::chrono::nanoseconds longest{};
    const auto search = [&](WindowDriver& window) {
        longest = {};
        window.Click(IDC_FIND_ACCOUNTS);
        std::chrono::nanoseconds last = WorkOfThisThread();
        auto& list = dynamic_cast<CListCtrl&>(*picker.GetDlgItem(IDC_FOUND_ACCOUNTS));
        EXPECT_TRUE(window.WaitUntil([&] {
            longest = std::max(longest, WorkOfThisThread() - last);
            last = WorkOfThisThread();
            return list.GetItemCount() > 50'000;
        }));
        window.Click(IDC_ACCOUNT_NAME);
        for (const char* key : {"9", "8", "7"}) {
            last = WorkOfThisThread();
            window.Press(key);
            longest = std::max(longest, WorkOfThisThread() - last);
        }
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS), Contains("person9870 | EXAMPLE | User"));
        window.Press("Esc");
    };
    int tries = 0;
    do {
        Run(search);
    } while (longest >= test::kSlowness * kNoticed && ++tries < kMostTries);
    EXPECT_LT(longest, test::kSlowness * kNoticed);
}

class EditorInDomain : public test::EditorTest {
  protected:
    void MakeFiles() override {
        domain.Add(kAnna, "anna");
        domain.Add(kEngineering, "Engineering", SidTypeGroup);
        Give(folder.MakeFile("file"), "D:P(A;;FR;;;" + FakeDomain::SidText(kAnna) + ")(A;;0x116;;;" +
                                          FakeDomain::SidText(kEngineering) + ")");
    }

    // `expect` declares what is shown then.
    void PickAnna(
        WindowDriver& window, const std::function<void()>& expect = [] {}) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& picker) {
            expect();
            picker.SetText(IDC_ACCOUNT_NAME, "EXAMPLE\\anna");
            picker.Press("Return");
        });
        window.Click(IDC_CHANGE_EFFECTIVE_ACCOUNT);
    }

    FakeDomain domain;
};

TEST_F(EditorInDomain, NamesFollowWhenTheyCome) {
    domain.HoldNames(true);
    Edit({"file"}, [&](WindowDriver& window) {
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST), Contains(HasSubstr(" | " + FakeDomain::SidText(kAnna))));
        window.SelectRow(IDC_ACCESS_LIST, 1);
        domain.HoldNames(false);
        EXPECT_TRUE(window.WaitUntil([&] {
            return testing::Matches(
                ElementsAre(HasSubstr(" | EXAMPLE\\anna | "), HasSubstr(" | EXAMPLE\\Engineering | ")))(
                window.Rows(IDC_ACCESS_LIST));
        }));
        EXPECT_THAT(window.SelectedRows(IDC_ACCESS_LIST), ElementsAre(1)) << "as the user left it";
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [&](WindowDriver& entry) {
            EXPECT_EQ(entry.Text(IDC_ENTRY_ACCOUNT), "EXAMPLE\\Engineering");
            entry.Press("Esc");
        });
        window.Click(IDC_EDIT_ENTRY);
        window.Press("Esc");
    });
}

TEST_F(EditorInDomain, EffectiveRightsTellWhatTheGroupsRestOn) {
    Edit(
        {"file"},
        [&](WindowDriver& window) {
            EXPECT_FALSE(window.IsVisible(IDC_EXACT_GROUPS));
            domain.SetGroups(ERROR_SUCCESS, {kAnna}, GroupsOrigin::kLastLogon);
            PickAnna(window);
            EXPECT_EQ(window.Text(IDC_EFFECTIVE_ACCOUNT), "EXAMPLE\\anna");
            EXPECT_THAT(window.Text(IDC_EFFECTIVE_REMARK), HasSubstr("as of the last logon"));
            EXPECT_TRUE(window.IsRowChecked(IDC_EFFECTIVE_RIGHTS, 2));
            EXPECT_FALSE(window.IsRowChecked(IDC_EFFECTIVE_RIGHTS, 5));

            domain.SetGroups(ERROR_SUCCESS, {kAnna, kEngineering}, GroupsOrigin::kExact);
            window.Click(IDC_EXACT_GROUPS);
            EXPECT_TRUE(window.WaitUntil([&] { return window.IsRowChecked(IDC_EFFECTIVE_RIGHTS, 5); }));
            EXPECT_THAT(window.Text(IDC_EFFECTIVE_REMARK), HasSubstr("a logon gives it now"));

            domain.SetGroups(kDomainOffline, {}, GroupsOrigin::kExact);
            PickAnna(window, [&] {
                ui.ExpectError(
                    "The groups of EXAMPLE\\anna are not known, since its domain does not answer.");
            });
            EXPECT_TRUE(window.IsRowChecked(IDC_EFFECTIVE_RIGHTS, 5)) << "the marks stay";
            window.Press("Esc");
        },
        "Effective Permissions");
}

TEST_F(EditorInDomain, TheQuestionForExactGroupsHoldsNothingUp) {
    Edit(
        {"file"},
        [&](WindowDriver& window) {
            domain.SetGroups(ERROR_SUCCESS, {kAnna}, GroupsOrigin::kLastLogon);
            PickAnna(window);
            const std::string remark = window.Text(IDC_EFFECTIVE_REMARK);
            domain.HoldAnswers(true);
            window.Click(IDC_EXACT_GROUPS);
            EXPECT_EQ(window.Text(IDC_EXACT_GROUPS), "&Stop");
            EXPECT_THAT(window.Text(IDC_EFFECTIVE_REMARK), StartsWith("Asking which groups "));
            window.SwitchToTab("Permissions");
            window.SwitchToTab("Effective Permissions");
            window.Click(IDC_EXACT_GROUPS);
            EXPECT_EQ(window.Text(IDC_EXACT_GROUPS), "Ask &exactly");
            EXPECT_EQ(window.Text(IDC_EFFECTIVE_REMARK), remark);
            window.Click(IDC_EXACT_GROUPS);
            window.Press("Esc");
        },
        "Effective Permissions");
    domain.HoldAnswers(false);  // the answer comes when the page has gone
}

TEST_F(EditorInDomain, OnlyRootIsOfferedTheExactGroups) {
    domain.mayAskExactly = false;
    Edit(
        {"file"},
        [&](WindowDriver& window) {
            domain.SetGroups(ERROR_SUCCESS, {kAnna}, GroupsOrigin::kDomain);
            PickAnna(window);
            EXPECT_FALSE(window.IsVisible(IDC_EXACT_GROUPS));
            EXPECT_THAT(window.Text(IDC_EFFECTIVE_REMARK), HasSubstr("may be as of the last logon"));
            window.Press("Esc");
        },
        "Effective Permissions");
}

}  // namespace
}  // namespace permora
