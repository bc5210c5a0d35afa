#include "security/object_security.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/nt/security_descriptor.h"
#include "platform/system_message.h"
#include "security/message_boxes.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"
#include "tests/support/recording_presenter.h"

namespace permora {
namespace {

using testing::kAllow;
using testing::kDeny;
using testing::RecordedBox;
using testing::RecordingPresenter;
using testing::ServiceFakes;
using testing::ShortEntry;

RecordedBox SystemError(DWORD code) {
    return {kErrorCaption, GetSystemMessageText(code), MB_ICONERROR};
}

class ObjectSecurityTest : public ::testing::Test {
  protected:
    ObjectSecurityTest() {
        Hold(nt::DaclState::kList, {{kAllow, 'A', 1, 0x13}, {kDeny, 'B', 2, 0}});
        services.getVolumeInformation = [this](LPCSTR /*root*/, LPDWORD flags) {
            if (volumeError != ERROR_SUCCESS) {
                SetLastError(volumeError);
                return FALSE;
            }
            *flags = volumeFlags;
            return TRUE;
        };
        services.getNamedSecurityInfo = [this](LPCSTR path, PACL* dacl, PSECURITY_DESCRIPTOR* descriptor) {
            EXPECT_STREQ(path, "item");
            return readError != ERROR_SUCCESS ? readError : HandOut(dacl, descriptor);
        };
    }

    // What the object holds from now on.
    void Hold(nt::DaclState state, const std::vector<ShortEntry>& entries, std::uint16_t control = 0) {
        held = nt::SecurityDescriptor();
        held.control = static_cast<std::uint16_t>(held.control | control);
        held.daclState = state;
        std::vector<std::uint8_t> bytes = testing::DaclBytes(entries);
        held.dacl = *nt::Acl::FromBytes(bytes);
    }

    DWORD HandOut(PACL* dacl, PSECURITY_DESCRIPTOR* descriptor) const {
        std::vector<std::uint8_t> bytes;
        EXPECT_TRUE(held.AppendTo(bytes));
        *descriptor = LocalAlloc(LMEM_FIXED, bytes.size());
        std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(*descriptor));
        BOOL present = FALSE;
        BOOL defaulted = FALSE;
        EXPECT_TRUE(GetSecurityDescriptorDacl(*descriptor, &present, dacl, &defaulted));
        return ERROR_SUCCESS;
    }

    bool Read(ItemPlace place = ItemPlace::kCurrentDirectory) {
        return ReadObjectDacl(nullptr, "item", place, object);
    }

    RecordingPresenter boxes;
    ServiceFakes services;
    nt::SecurityDescriptor held;
    DWORD volumeError = ERROR_SUCCESS;
    DWORD volumeFlags = FILE_PERSISTENT_ACLS;
    DWORD readError = ERROR_SUCCESS;
    ObjectSecurity object;
};

TEST_F(ObjectSecurityTest, ANullListIsToldAndReadsAsNoEntries) {
    ASSERT_TRUE(Read());
    Hold(nt::DaclState::kNull, {});
    ASSERT_TRUE(Read());
    EXPECT_TRUE(object.entries.Entries().empty());
    EXPECT_EQ(object.dacl, nullptr);
    EXPECT_EQ(boxes.TakeBoxes(),
              (std::vector<RecordedBox>{{kInformationCaption,
                                         "There is no any access control list associated with object (All "
                                         "access is currently allowed).",
                                         MB_ICONINFORMATION}}));
}

TEST_F(ObjectSecurityTest, AnInaccessibleVolumeCountsAsOneWithAccessControlWhereTheReaderSaysSo) {
    volumeError = ERROR_ACCESS_DENIED;
    volumeFlags = 0;
    EXPECT_TRUE(Read());
    EXPECT_FALSE(
        ReadListOfObject(nullptr, "item", ItemPlace::kCurrentDirectory, HiddenVolume::kFail, object));
    EXPECT_EQ(boxes.TakeBoxes(), std::vector<RecordedBox>{SystemError(ERROR_ACCESS_DENIED)});
    EXPECT_NE(object.dacl, nullptr) << "what was read before";
}

TEST_F(ObjectSecurityTest, AFailedReadIsToldAndLeavesWhatWasRead) {
    ASSERT_TRUE(Read());
    const ACL* before = object.dacl;
    Hold(nt::DaclState::kList, {});
    const RecordedBox noAccessControl = {
        kInformationCaption, "Access control is not supported by the file system", MB_ICONINFORMATION};
    const struct {
        DWORD volumeError;
        DWORD volumeFlags;
        DWORD readError;
        RecordedBox box;
    } cases[] = {
        {ERROR_NOT_READY, FILE_PERSISTENT_ACLS, 0, SystemError(ERROR_NOT_READY)},
        {0, ~DWORD{FILE_PERSISTENT_ACLS}, 0, noAccessControl},
        {0, FILE_PERSISTENT_ACLS, ERROR_FILE_NOT_FOUND, SystemError(ERROR_FILE_NOT_FOUND)},
        {ERROR_ACCESS_DENIED, 0, ERROR_INVALID_SECURITY_DESCR, SystemError(ERROR_INVALID_SECURITY_DESCR)},
    };
    for (const auto& c : cases) {
        volumeError = c.volumeError;
        volumeFlags = c.volumeFlags;
        readError = c.readError;
        EXPECT_FALSE(Read());
        EXPECT_EQ(boxes.TakeBoxes(), std::vector<RecordedBox>{c.box});
        EXPECT_EQ(object.dacl, before);
        EXPECT_EQ(object.entries.Entries().size(), 2U);
    }
}

TEST_F(ObjectSecurityTest, WritesEveryItemAndTellsEachThatFails) {
    ACL dacl{};
    std::string written;
    std::set<SECURITY_INFORMATION> informations;
    services.setNamedSecurityInfo = [&](LPCSTR path, SECURITY_INFORMATION information, PACL list) {
        EXPECT_EQ(list, &dacl);
        informations.insert(information);
        written += path + std::string(" ");
        return path == std::string("two") ? DWORD{ERROR_ACCESS_DENIED} : DWORD{ERROR_SUCCESS};
    };
    const std::vector<const char*> paths = {"one", "two", "three"};
    EXPECT_EQ(WriteObjectDacl(nullptr, paths, DaclInheritance::kProtected, &dacl),
              std::vector<std::size_t>{1});
    EXPECT_EQ(written, "one two three ");
    EXPECT_EQ(boxes.TakeBoxes(), std::vector<RecordedBox>{SystemError(ERROR_ACCESS_DENIED)});
    EXPECT_EQ(informations, std::set<SECURITY_INFORMATION>{0x80000004});
    EXPECT_TRUE(WriteObjectDacl(nullptr, {&paths[0], 1}, DaclInheritance::kFromParent, &dacl).empty());
    EXPECT_EQ(informations, (std::set<SECURITY_INFORMATION>{0x20000004, 0x80000004}));
}

}  // namespace
}  // namespace permora
