#include "security/dacl_builder.h"

#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "platform/raw_security.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"

namespace permora {
namespace {

using test::ListOf;
using test::ServiceFakes;
using test::TextOf;

class DaclBuilder : public ::testing::Test {
  protected:
    // Null after a failure.
    UniqueLocal<ACL> Build(const AccessEntryList& list) {
        UniqueLocal<ACL> dacl;
        failure = BuildDacl(library.get(), list.Entries(), dacl);
        EXPECT_EQ(dacl != nullptr, failure.IsDone());
        return dacl;
    }

    ServiceFakes services;
    UniqueLibrary library = LoadAccessListLibrary();
    Outcome failure;
};

TEST_F(DaclBuilder, WritesAllowAndDenyEntriesInTheirOrderAndNoOthers) {
    AccessEntryList list = ListOf(
        "(A;ID;0x1;;;BA)(OA;;0x1;;;BU)(AU;;0x1;;;BU)(A;SA;0x1;;;BU)(D;OICINPIO;0x10000202;;;BG)(A;;0x120089;;"
        ";WD)");
    list.AddEntry({}, 2, 0, ACCESS_DENIED_ACE_TYPE);  // without an account
    EXPECT_EQ(list.UnacceptableCount(), 2U);
    const UniqueLocal<ACL> dacl = Build(list);
    ASSERT_NE(dacl, nullptr);
    EXPECT_EQ(TextOf(AccessEntryList(AcesOf(dacl.get()))),
              "(A;ID;CC;;;BA)(D;OICINPIO;0x10000202;;;BG)(A;;FR;;;WD)");

    const UniqueLocal<ACL> empty = Build({});
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->AclSize, sizeof(ACL));
    EXPECT_EQ(empty->AceCount, 0);
}

TEST_F(DaclBuilder, FailsWhenTheListWouldBeTooLarge) {
    std::string entries;
    for (int i = 0; i < 1819; ++i)
        entries += "(A;;0x1;;;S-1-5-21-1-2-3-4)";
    EXPECT_NE(Build(ListOf(entries)), nullptr);  // 8 + 1819 * 36 bytes, nearly 64 KiB

    AccessEntryList tooLarge = ListOf(entries);
    tooLarge.AddEntry(test::AccountOf("S-1-5-21-1-2-3-5"), 1, 0, ACCESS_ALLOWED_ACE_TYPE);
    tooLarge.AddEntry(test::AccountOf("S-1-5-21-1-2-3-6"), 1, 0, ACCESS_ALLOWED_ACE_TYPE);
    EXPECT_EQ(Build(tooLarge), nullptr);
    EXPECT_EQ(failure.step, Step::kInitializeList);
}

TEST_F(DaclBuilder, FailsWithoutLibraryFunctionOrMemory) {
    for (const char* missing : {"AddAccessAllowedAceEx", "AddAccessDeniedAceEx"}) {
        services.missingFunction = missing;
        EXPECT_EQ(Build({}), nullptr);
        EXPECT_EQ(failure.step, Step::kFindListFunctions) << missing;
    }
    services.missingFunction.clear();
    services.allocationsLeft = 0;
    EXPECT_EQ(Build({}), nullptr);
    EXPECT_EQ(failure.step, Step::kTakeBuffer);
    services.loadLibrary = [](LPCSTR) { return nullptr; };
    library = LoadAccessListLibrary();
    EXPECT_EQ(Build({}), nullptr);
    EXPECT_EQ(failure.step, Step::kFindListFunctions) << "no library";
}

class AbsoluteDescriptor : public ::testing::Test {
  protected:
    AbsoluteDescriptor() {
        const auto descriptor = nt::FromSddl("O:BAG:SYD:(D;OICI;0x7;;;WD)");
        EXPECT_TRUE(descriptor && descriptor->AppendTo(bytes));
    }

    ServiceFakes services;
    std::vector<std::uint8_t> bytes;
    PSECURITY_DESCRIPTOR absolute = nullptr;
    UniqueHeap heap;
};

TEST_F(AbsoluteDescriptor, FailsWithoutLeavingAnything) {
    // The heap, then the descriptor, the list, the owner and the group.
    for (int allocations = 0; allocations < 5; ++allocations) {
        services.allocationsLeft = allocations;
        EXPECT_FALSE(MakeAbsoluteDescriptor(bytes.data(), absolute, heap)) << allocations;
    }
    services.allocationsLeft = 5;
    bytes[0] = 2;  // no known revision
    EXPECT_FALSE(MakeAbsoluteDescriptor(bytes.data(), absolute, heap));
    EXPECT_EQ(absolute, nullptr);
    EXPECT_EQ(heap, nullptr);
}

}  // namespace
}  // namespace permora
