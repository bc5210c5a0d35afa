// Writes a text of saved lists, object by object.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "saved/saved_list.h"

namespace permora {

// Where the text goes.
class SavedOutput {
  public:
    virtual ~SavedOutput() = default;
    // 0 or a system error code.
    virtual DWORD Write(std::string_view bytes) = 0;
};

// Calls come in the order Begin, then for each top BeginTop and its objects in their order (ComesBefore in
// saved_path.h, the top itself first, with an empty path), End. All answer with 0 or a system error code;
// after a failure the text is not complete and must not be used, unless the call says something else. Memory
// does not grow with the objects. One thread at a time.
class SavedListWriter {
  public:
    // `output` must outlive the writer.
    static std::unique_ptr<SavedListWriter> Make(SavedForm form, SavedOutput& output);

    virtual ~SavedListWriter() = default;

    virtual DWORD Begin(const SavedHead& head) = 0;
    virtual DWORD BeginTop(const SavedTop& top) = 0;
    // `descriptor` is self-relative and has no parts but those of the head. Nothing is written, and the text
    // stays usable, with ERROR_INVALID_NAME (a path that the form cannot hold),
    // ERROR_INVALID_SECURITY_DESCR, and in the form of icacls ERROR_NOT_SUPPORTED (a list that SDDL cannot
    // say exactly). Such an object is then one that is missing: see AddGap.
    virtual DWORD Add(std::string_view path, SavedKind kind, std::span<const std::uint8_t> descriptor) = 0;
    // kMounted, kUnread or kUnlisted. With the last two, our own form says at its end that it is not
    // complete; the form of icacls cannot say it, so they are ERROR_NOT_SUPPORTED there.
    virtual DWORD AddGap(std::string_view path, SavedKind kind, DWORD error) = 0;
    // Something is missing that no line can name.
    virtual DWORD MarkIncomplete() = 0;
    virtual DWORD End() = 0;
};

}  // namespace permora
