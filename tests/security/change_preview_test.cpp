// Previews beside what the changes then do, on real volumes.
#include "security/change_preview.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/security_change.h"
#include "security/owner_candidates.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using test::Held;
using test::ListOf;
using test::SetDescriptorText;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

class Unwatched : public TreeObserver {
  public:
    bool Begin(const char* /*name*/) override { return true; }
    void PassOver(const std::string& /*path*/, DWORD /*error*/) override {}
};

using States = std::map<std::string, nt::SecurityDescriptor>;

// Below the first item stands everything that a change treats in another way.
constexpr std::pair<const char*, const char*> kObjects[] = {
    {"one", "D:P(A;OICI;FA;;;BA)(A;;FR;;;BU)"},
    {"one/plain", "D:"},
    {"one/own", "D:(D;;CC;;;BG)"},
    {"one/closed", "D:P(A;OICI;FR;;;WD)"},
    {"one/closed/deep", "D:"},
    {"one/open", "D:NO_ACCESS_CONTROL"},
    {"two", "D:P(A;OICI;FR;;;WD)(D;;CC;;;BG)"},
    {"two/plain", "D:"},
};

States Read(const std::string& root) {
    States states;
    for (const auto& [name, sddl] : kObjects)
        EXPECT_EQ(ReadDescriptor(Held(root + '/' + name), DACL_SECURITY_INFORMATION, states[name]), 0U);
    return states;
}

// The items, or what is below them, that differ.
std::size_t CountDifferent(const States& before, const States& after, bool ofItems) {
    return static_cast<std::size_t>(std::ranges::count_if(before, [&](const auto& state) {
        const bool isItem = state.first.find('/') == std::string::npos;
        return isItem == ofItems && state.second != after.at(state.first);
    }));
}

std::vector<RememberedObject> ItemsIn(const std::string& root) {
    std::vector<RememberedObject> items;
    for (const char* name : {"/one", "/two"})
        items.emplace_back(nullptr, PathFromArgument((root + name).c_str()));
    return items;
}

void Make(const std::string& root) {
    for (const auto& [name, sddl] : kObjects)
        std::filesystem::create_directory(root + '/' + name);
    for (const auto& [name, sddl] : kObjects)
        ASSERT_EQ(SetDescriptorText(root + '/' + name, sddl), ERROR_SUCCESS) << name;
}

void ExpectThatPreviewsComeTrue(const std::string& root) {
    for (const char* sddl : {"D:P", "D:P(A;OICI;FA;;;BU)(A;;FR;;;BA)", "D:(A;OICI;0x10000000;;;BA)",
                             "D:P(A;OICI;FA;;;BA)(A;;FR;;;BU)"}) {
        for (const BelowChange below : {BelowChange::kCarryDown, BelowChange::kReset}) {
            SCOPED_TRACE(std::string(sddl) + (below == BelowChange::kReset ? " and below" : ""));
            Make(root);
            const UniqueLocal<void> wanted = test::DescriptorOf(sddl);
            PACL list = ListOf(wanted);
            const DaclInheritance inheritance = std::string(sddl).starts_with("D:P")
                                                    ? DaclInheritance::kProtected
                                                    : DaclInheritance::kFromParent;
            const std::vector<RememberedObject> items = ItemsIn(root);
            Unwatched observer;
            const States before = Read(root);
            const ChangePreview preview =
                PreviewListOnItems(items, inheritance, {list, list}, below, observer);
            EXPECT_EQ(Read(root), before) << "a preview writes nothing";
            SecurityPreview first;
            ASSERT_EQ(
                Held(root + "/one").PreviewSecurity(DaclWriteInformation(inheritance), {.dacl = list}, first),
                0U);

            ChangeResults results;
            WriteListToItems(items, PlacesOf(items, Contents::kNone), inheritance, {list, list}, nullptr,
                             Unrecorded(), results);
            EXPECT_EQ(results.Count(ResultState::kFailed), 0U);
            const UniqueLocal<void> nothing = test::DescriptorOf("D:");
            TreeCounts counts;
            for (const char* item : {"/one", "/two"})
                if (below == BelowChange::kReset)
                    ASSERT_EQ(Held(root + item)
                                  .SetListsBelow(ListOf(nothing), TreeListMode::kWrite, Unrecorded(),
                                                 observer, counts),
                              0U);
            const States after = Read(root);
            EXPECT_EQ(first.before, before.at("one"));
            EXPECT_EQ(first.after, after.at("one"));
            EXPECT_EQ(preview.changed, CountDifferent(before, after, true));
            EXPECT_EQ(preview.changed + preview.unchanged, items.size());
            ASSERT_TRUE(preview.below);
            EXPECT_EQ(preview.below->changed, CountDifferent(before, after, false));
            const auto countLosing = std::ranges::count_if(before, [&](const auto& state) {
                return state.first.find('/') != std::string::npos &&
                       !LostOwnEntries(state.second, after.at(state.first)).empty();
            });
            EXPECT_EQ(preview.below->losingOwn, static_cast<std::size_t>(countLosing));
            EXPECT_EQ(preview.TakesUnseen(), preview.loseOthers || countLosing > 0 ||
                                                 (preview.resetsBelow && preview.below->emptied > 0));
        }
    }
}

TEST(ChangePreviewTest, WhatItSaysIsWhatTheChangeThenDoes) {
    const test::TemporaryFolder folder;
    if (SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)") == ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    ExpectThatPreviewsComeTrue(folder.Path());
}

TEST(ChangePreviewTest, OnNtfsAsWell) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ExpectThatPreviewsComeTrue(volume.Root());
}

TEST(ChangePreviewTest, LossesAndWhoIsLockedOutAreNamed) {
    const test::TemporaryFolder folder;
    const std::string one = folder.MakeFile("one");
    const std::string two = folder.MakeFile("two");
    if (SetDescriptorText(one, "D:P(A;;FA;;;WD)") == ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    ASSERT_EQ(SetDescriptorText(two, "D:P(A;;FA;;;WD)(A;;FR;;;BG)"), 0U);
    Unwatched observer;
    const auto previewOf = [&](const char* sddl) {
        const UniqueLocal<void> wanted = test::DescriptorOf(sddl);
        return PreviewListOnItems(ItemsIn(folder.Path()), DaclInheritance::kProtected,
                                  {ListOf(wanted), ListOf(wanted)}, BelowChange::kCarryDown, observer);
    };
    const ChangePreview harmless = previewOf("D:P(A;;FA;;;WD)(A;;FA;;;BG)");
    EXPECT_FALSE(harmless.TakesUnseen());
    EXPECT_THAT(harmless.lost, IsEmpty());
    EXPECT_THAT(harmless.closedToMe, IsEmpty());

    const ChangePreview closing = previewOf("D:P(A;;FR;;;S-1-5-21-7-8-9-1001)");
    EXPECT_TRUE(closing.TakesUnseen());
    EXPECT_EQ(closing.me, OwnAccount());
    EXPECT_EQ(closing.closedToMe.size(), 2U);
    EXPECT_THAT(closing.closed, IsEmpty());
    EXPECT_THAT(PreviewLines(closing, AccountDisplayName),
                Contains(HasSubstr("two: Allow BUILTIN\\Guests: Read")));
    EXPECT_EQ(previewOf("D:P").closed.size(), 2U);
    ChangePreviewing previewing(observer);
    const UniqueLocal<void> empty = test::DescriptorOf("D:P");
    previewing.Add(Held(one), "one", {DACL_SECURITY_INFORMATION, {.dacl = ListOf(empty)}});
    previewing.AddTree("one", [](TreeObserver&, TreeCounts&) { return DWORD{ERROR_ACCESS_DENIED}; });
    EXPECT_THAT(
        PreviewLines(previewing.Preview(), AccountDisplayName),
        IsSupersetOf({HasSubstr("would change: 1, already so: 0, failed: 0"), HasSubstr("  below one: ")}))
        << "an item counts once";
    ChangePreview stopped;
    stopped.changed = 1234;
    stopped.isStopped = true;
    EXPECT_THAT(PreviewLines(stopped, AccountDisplayName),
                ElementsAre("Items: would change: 1,234, already so: 0, failed: 0",
                            "Whether you would be locked out is not known",
                            "Stopped: what came behind is not counted"));
}

}  // namespace
}  // namespace permora
