// Editing the security of an object and everything below it.
//
// The tree is read in its order, a folder before what is in it. What the edit changes is found again below
// the held top, never through a link, read again, recorded and written once. An object inherits from what its
// folder has by then: when the folder could not be written, from what it has kept.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "changes/descriptor_edit.h"
#include "platform/change_recorder.h"
#include "platform/held_object.h"
#include "platform/tree_security.h"

namespace permora {

struct TreeEditOptions {
    TreeListMode mode = TreeListMode::kWrite;
    // Files with further names whose owner the edit changes.
    LinkedFiles linked = LinkedFiles::kPassOver;
    LinkedFiles linkedTop = LinkedFiles::kChange;  // the same of the top, which the user has named
};

struct TreeEditCounts {
    std::uint64_t changed = 0;
    std::uint64_t unchanged = 0;
    std::uint64_t failed = 0;  // each was reported
};

// Why an object is as it was.
enum class NotEdited : std::uint8_t {
    kError,          // a system error code says why: ERROR_NOT_SAME_DEVICE for what is mounted below,
                     // kHasFurtherNames for a file with hard links
    kUnlisted,       // the folder may have been changed, but what is in it is not known to its end: likewise
    kHiddenAccount,  // EditFault::kHiddenAccount
    kUnknownFolder,  // EditFault::kUnknownFolder
    kNoList,         // EditFault::kNoList
};

// What the user should know about an object beside its change.
enum class EditRemark : std::uint8_t {
    kLetsNobodyIn,    // since this edit: LetsNobodyIn
    kInheritedStay,   // EditedSecurity::inheritedStay
    kOtherTypesStay,  // EditedSecurity::otherTypesStay
    // Of the top, before anything is changed: the edit is about system access lists, which cannot be read.
    kSystemListsStay,
};

// All paths are below the top, with backslashes between the names; empty: the top itself. Texts live for the
// call.
class TreeEditHost {
  public:
    virtual ~TreeEditHost() = default;

    // This object comes next. False ends the work; what was not written so far stays as it is.
    virtual bool Begin(std::string_view path) = 0;
    // Whether Begin would be false; asked before each write.
    virtual bool IsStopped() const = 0;
    // In TreeListMode::kCountOnly: what kWrite would make of the object.
    virtual void Preview(const std::string& path, bool isFolder, const nt::SecurityDescriptor& before,
                         const nt::SecurityDescriptor& after) = 0;
    virtual void Fail(const std::string& path, NotEdited fault, DWORD error) = 0;
    virtual void Remark(const std::string& path, EditRemark remark) = 0;
};

// 0 when every object was tried, with any number of failures, or the volume is lost (IsVolumeLost), which is
// then told as kUnlisted of the top, too. ERROR_OPERATION_ABORTED when the host ended it.
// Any other code is the recorder's, which could not keep what was to be replaced. What was done is added to
// `counts`, whatever the result. An object that vanishes counts as nothing. Memory is that for the folders on
// the way to an object, and for one batch.
[[nodiscard]] DWORD EditTree(HeldObject& top, DescriptorEdit& edit, const TreeEditOptions& options,
                             TreeEditHost& host, ChangeRecorder& recorder, TreeEditCounts& counts);

}  // namespace permora
