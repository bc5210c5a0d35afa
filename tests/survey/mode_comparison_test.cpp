// Lists against the permissions of the host, with accounts that are made up.
#include "survey/mode_comparison.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <vector>

#include "platform/accounts.h"
#include "platform/nt/sddl.h"

namespace permora::test {
namespace {

constexpr std::uint32_t kAnna = 1;
constexpr std::uint32_t kBert = 2;
constexpr std::uint32_t kCarl = 3;
constexpr std::uint32_t kStaff = 11;  // anna and bert
constexpr std::uint32_t kGuests = 12;

const char* const kAll = "Everyone";

// User n of the host is S-1-22-1-n, group n S-1-22-2-n.
nt::Sid User(std::uint32_t number) {
    return nt::Sid(22, {1, number});
}
nt::Sid Group(std::uint32_t number) {
    return nt::Sid(22, {2, number});
}
const nt::Sid kEveryone(1, {0});
const nt::Sid kSilent(5, {21, 7, 7, 7, 1000});

class MadeUpAccounts : public ModeAccounts {
  public:
    const MeantPeople& PeopleOf(const nt::Sid& account) override {
        MeantPeople& meant = kept[account.ToText()];
        meant = {};
        if (account == kEveryone) meant.open = {kEveryone};
        if (account == Group(kStaff)) meant.people = {User(kAnna), User(kBert)};
        if (account == kSilent) meant.error = kDomainOffline;
        if (account.Authority() == 22 && account.ToText().starts_with("S-1-22-1-")) meant.people = {account};
        return meant;
    }
    DWORD FindHost(const nt::Sid& person, HostAccount& found) override {
        for (const std::uint32_t number : {std::uint32_t{0}, kAnna, kBert, kCarl})
            if (person == User(number)) {
                found.user = number;
                if (number == kAnna || number == kBert) found.groups = {kStaff};
                return ERROR_SUCCESS;
            }
        return ERROR_NONE_MAPPED;
    }
    DWORD FindSids(const nt::Sid& account, std::vector<nt::Sid>& sids) override {
        sids = {account, kEveryone};
        if (account == User(kAnna) || account == User(kBert)) sids.push_back(Group(kStaff));
        return ERROR_SUCCESS;
    }
    nt::Sid HostOwner(const HostPermissions& permissions) override { return User(permissions.owner); }
    nt::Sid HostGroup(const HostPermissions& permissions) override { return Group(permissions.group); }

  private:
    std::map<std::string, MeantPeople> kept;
};

// "out S-1-22-1-1 rw" for each finding.
std::string TextOf(const std::vector<ModeFinding>& findings) {
    std::string text;
    for (const ModeFinding& finding : findings) {
        text += text.empty() ? "" : ", ";
        text += finding.remark == Remark::kModeKeepsOut ? "out "
                : finding.remark == Remark::kModeLetsIn ? "in "
                                                        : "? ";
        text += finding.account == kEveryone ? kAll : finding.account.ToText();
        text += (finding.isReading ? " r" : " ") + std::string(finding.isWriting ? "w" : "");
    }
    return text;
}

// The POSIX access list "u::rw-,u:2:r--,g::r--,m::r--,o::---", as the kernel keeps it.
std::vector<std::uint8_t> ListWithBert(std::uint8_t bits, std::uint8_t mask) {
    constexpr std::uint8_t kOwnerTag = 0x01, kUserTag = 0x02, kGroupTag = 0x04, kMaskTag = 0x10,
                           kOtherTag = 0x20;
    return {2,         0, 0,    0,                  // the version
            kOwnerTag, 0, 6,    0, 0,     0, 0, 0,  // each with a tag, bits and a number
            kUserTag,  0, bits, 0, kBert, 0, 0, 0,  //
            kGroupTag, 0, 4,    0, 0,     0, 0, 0,  //
            kMaskTag,  0, mask, 0, 0,     0, 0, 0,  //
            kOtherTag, 0, 0,    0, 0,     0, 0, 0};
}

TEST(ModeComparison, FindsWhoIsLetInOtherwise) {
    constexpr ServedBy kBoth = ServedBy::kListAndHost;
    constexpr ServedBy kHost = ServedBy::kHostAlone;
    constexpr auto kIsFile = nt::ObjectKind::kFile;
    constexpr auto kIsFolder = nt::ObjectKind::kFolder;
    const char* const kStaffWrites = "D:P(A;;FRFW;;;S-1-22-2-11)";
    const struct {
        const char* list;
        std::uint32_t mode;
        std::uint32_t owner;
        std::uint32_t group;
        ServedBy by;
        nt::ObjectKind kind;
        const char* found;
    } rows[] = {
        {"D:P(A;;FRFW;;;WD)", 0666, 0, kStaff, kBoth, kIsFile, ""},
        {"D:P(A;;FRFW;;;WD)", 0660, 0, kStaff, kBoth, kIsFile, "out Everyone rw"},
        {"D:P(A;;FRFW;;;WD)", 0606, 0, kStaff, kBoth, kIsFile, "out S-1-22-1-1 rw, out S-1-22-1-2 rw"},
        {"D:P(A;;FR;;;WD)", 0604, 0, 0, kBoth, kIsFile, ""},
        {"D:NO_ACCESS_CONTROL", 0660, 0, kStaff, kBoth, kIsFile, "out Everyone rw"},
        {kStaffWrites, 0640, kAnna, kStaff, kBoth, kIsFile, "out S-1-22-1-2 w"},
        {kStaffWrites, 0660, kCarl, kStaff, kBoth, kIsFile, ""},
        {kStaffWrites, 0600, 0, 0, kBoth, kIsFile, "out S-1-22-1-1 rw, out S-1-22-1-2 rw"},
        // What is handed on alone, and what a denial takes.
        {"D:P(A;OICIIO;FA;;;WD)", 0700, 0, 0, kBoth, kIsFolder, ""},
        {"D:P(D;;FW;;;S-1-22-1-1)(A;;FRFW;;;S-1-22-2-11)", 0644, 0, 0, kBoth, kIsFile, "out S-1-22-1-2 w"},
        // A folder is entered as well.
        {"D:P(A;;FR;;;WD)", 0766, 0, kStaff, kBoth, kIsFolder,
         "out Everyone r, out S-1-22-1-1 r, out S-1-22-1-2 r"},
        // Nobody is let in beyond a list that counts.
        {"D:P(A;;FR;;;S-1-22-1-1)", 0666, 0, 0, kBoth, kIsFile, ""},
        {"D:P(A;;FR;;;S-1-22-1-1)", 0666, 0, 0, kHost, kIsFile, "in S-1-22-1-1 w, in Everyone rw"},
        {"D:P(D;;FR;;;S-1-22-1-1)(A;;FR;;;WD)", 0604, 0, 0, kHost, kIsFile, "in S-1-22-1-1 r"},
        {"D:P(A;;FR;;;S-1-22-1-1)", 0600, 0, 0, kHost, kIsFile, "out S-1-22-1-1 r"},
        // Nobody connects as these: the superuser is asked for nothing.
        {"D:P(A;;FA;;;S-1-22-1-0)(A;;FA;;;SY)(A;;FA;;;CO)", 0000, 0, kGuests, kBoth, kIsFile, ""},
        {"D:P(A;;FR;;;S-1-5-21-7-7-7-1000)", 0600, 0, 0, kBoth, kIsFile, "? S-1-5-21-7-7-7-1000 "},
        {"D:P(A;;FR;;;S-1-5-21-7-7-7-1000)", 0666, 0, 0, kBoth, kIsFile, ""},
        {"D:P(A;;FR;;;WD)", 0000, 0, 0, ServedBy::kUnknown, kIsFile, ""},
    };
    MadeUpAccounts accounts;
    for (const auto& row : rows) {
        const auto descriptor = nt::FromSddl(row.list);
        ASSERT_TRUE(descriptor) << row.list;
        ServedFolder served;
        served.by = row.by;
        const HostPermissions permissions{row.owner, row.group, row.mode, {}};
        EXPECT_EQ(TextOf(CompareWithMode(*descriptor, permissions, row.kind, served, accounts)), row.found)
            << row.list << ' ' << std::oct << row.mode;
    }
}

TEST(ModeComparison, AServerThatWorksAsOneUserIsThatUser) {
    MadeUpAccounts accounts;
    ServedFolder served;
    served.by = ServedBy::kListAndHost;
    served.user = User(kCarl);
    const auto descriptor = nt::FromSddl("D:P(A;;FR;;;WD)(A;;FA;;;S-1-22-1-1)");
    const HostPermissions permissions{0, 0, 0600, {}};
    EXPECT_EQ(TextOf(CompareWithMode(*descriptor, permissions, nt::ObjectKind::kFile, served, accounts)),
              "out S-1-22-1-3 r");
}

TEST(HostPermissionsTest, TheFirstClassOfAListThatKnowsTheAccountDecides) {
    const auto allows = [](std::vector<std::uint8_t> list, HostAccount account, std::uint32_t bits) {
        const std::optional<bool> answer = HostAllows({0, kStaff, 0, std::move(list)}, account, bits);
        return !answer ? "damaged" : *answer ? "yes" : "no";
    };
    const HostAccount bert{kBert, {kStaff}};
    EXPECT_STREQ(allows(ListWithBert(6, 6), bert, 6), "yes");
    EXPECT_STREQ(allows(ListWithBert(6, 4), bert, 6), "no");
    EXPECT_STREQ(allows(ListWithBert(0, 6), bert, 4), "no");
    EXPECT_STREQ(allows(ListWithBert(0, 6), {kAnna, {kStaff}}, 4), "yes");
    EXPECT_STREQ(allows(ListWithBert(0, 6), {kCarl, {kGuests}}, 4), "no");
    EXPECT_STREQ(allows(ListWithBert(0, 4), {0U, {}}, 6), "yes") << "the mask is not for the owner";
    EXPECT_STREQ(allows({2, 0, 0, 0, 1}, bert, 4), "damaged");
    EXPECT_STREQ(allows({9, 0, 0, 0}, bert, 4), "damaged");
}

}  // namespace
}  // namespace permora::test
