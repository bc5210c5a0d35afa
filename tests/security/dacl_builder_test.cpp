#include "security/dacl_builder.h"

#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "security/message_boxes.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"
#include "tests/support/recording_presenter.h"

namespace permora {
namespace {

using test::ListOf;
using test::RecordingPresenter;
using test::ServiceFakes;
using test::TextOf;

class DaclBuilder : public ::testing::Test {
  protected:
    UniqueLocal<ACL> Build(const AccessEntryList& list) const {
        return BuildDacl(nullptr, library.get(), list.Entries());
    }

    ServiceFakes services;
    UniqueLibrary library = LoadAccessListLibrary(nullptr);
};

TEST_F(DaclBuilder, WritesAllowAndDenyEntriesInTheirOrderAndNoOthers) {
    AccessEntryList list = ListOf(
        "(A;ID;0x1;;;BA)(OA;;0x1;;;BU)(AU;;0x1;;;BU)(A;SA;0x1;;;BU)(D;OICINPIO;0x10000202;;;BG)(A;;0x120089;;"
        ";WD)");
    list.AddEntry({}, 2, 0, ACCESS_DENIED_ACE_TYPE);  // without an account
    EXPECT_EQ(list.UnacceptableCount(), 2U);
    const UniqueLocal<ACL> dacl = Build(list);
    ASSERT_NE(dacl, nullptr);
    AccessEntryList written;
    written.LoadFromDacl(dacl.get());
    EXPECT_EQ(TextOf(written), "(A;ID;CC;;;BA)(D;OICINPIO;0x10000202;;;BG)(A;;FR;;;WD)");

    const UniqueLocal<ACL> empty = Build({});
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->AclSize, sizeof(ACL));
    EXPECT_EQ(empty->AceCount, 0);
}

TEST_F(DaclBuilder, TellsWhenTheListWouldBeTooLarge) {
    RecordingPresenter boxes;
    std::string entries;
    for (int i = 0; i < 1819; ++i)
        entries += "(A;;0x1;;;S-1-5-21-1-2-3-4)";
    EXPECT_NE(Build(ListOf(entries)), nullptr);  // 8 + 1819 * 36 bytes, nearly 64 KiB

    AccessEntryList tooLarge = ListOf(entries);
    tooLarge.AddEntry(test::AccountOf("S-1-5-21-1-2-3-5"), 1, 0, ACCESS_ALLOWED_ACE_TYPE);
    tooLarge.AddEntry(test::AccountOf("S-1-5-21-1-2-3-6"), 1, 0, ACCESS_ALLOWED_ACE_TYPE);
    EXPECT_EQ(Build(tooLarge), nullptr);
    EXPECT_EQ(boxes.TakeBoxes(),
              (std::vector<test::RecordedBox>{
                  {kErrorCaption, "Error: cannot initialize object's access control list", MB_ICONERROR}}));
}

TEST_F(DaclBuilder, EndsTheProcessWithoutLibraryFunctionOrMemory) {
    for (const char* missing : {"AddAccessAllowedAceEx", "AddAccessDeniedAceEx"}) {
        services.missingFunction = missing;
        EXPECT_EXIT(Build({}), ::testing::ExitedWithCode(0), "cannot load functions to apply settings");
    }
    services.missingFunction.clear();
    services.allocationsLeft = 0;
    EXPECT_EXIT(Build({}), ::testing::ExitedWithCode(0), "cannot allocate buffer");
    services.allocationsLeft = 9;
    services.loadLibrary = [](LPCSTR) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    };
    EXPECT_EXIT(LoadAccessListLibrary(nullptr), ::testing::ExitedWithCode(0),
                GetSystemMessageText(ERROR_ACCESS_DENIED).substr(0, 10));
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
