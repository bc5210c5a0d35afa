#include "editor/list_writing.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "framework/long_work.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"

namespace permora {
namespace {

bool IsOutOfDate(const ChangeResults& results) {
    const std::vector<ObjectResult>& failed = results.Listed(ResultState::kFailed);
    return !failed.empty() && failed.back().outcome.code == ERROR_REVISION_MISMATCH;
}

// Passes a change on, and remembers what its first object is given.
class FirstRemembered : public ChangeRecorder {
  public:
    explicit FirstRemembered(ChangeRecorder& passedTo) : recorder(passedTo) {}

    DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) override {
        return recorder.BeginTop(top, number);
    }
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override {
        const DWORD error = recorder.Record(top, batch);
        const std::lock_guard lock(guard);
        const bool isTop = error == ERROR_SUCCESS && batch.front().path.empty();
        // What is recorded again has changed before it could be written.
        if (isTop && (!first || first->fileNumber == batch.front().fileNumber)) first = batch.front();
        return error;
    }
    std::size_t BatchSize() const override { return recorder.BatchSize(); }
    DWORD Error() const override { return recorder.Error(); }

    // Whether the object has what it was given here.
    bool HasWritten(const HeldObject& object) {
        StoredSecurity now;
        const std::lock_guard lock(guard);
        return first && first->fileNumber == object.FileNumber() && object.ReadStored(now) == ERROR_SUCCESS &&
               now == first->after;
    }

  private:
    ChangeRecorder& recorder;
    std::mutex guard;
    std::optional<DescriptorChange> first;
};

// Once the first item is written, its list is no longer the one that was read, and not another program's.
void ShowWritten(const RememberedObject& item, FirstRemembered& recorder, ReadParts& shown) {
    HeldObject object;
    ReadParts present;
    if (FindItem(item, object).IsDone() &&
        object.ReadSecurity(DACL_SECURITY_INFORMATION, present) == ERROR_SUCCESS &&
        recorder.HasWritten(object))
        shown = std::move(present);
}

}  // namespace

bool MayOverwriteList(HWND owner, const std::string& item) {
    const std::string text = "The access control list of \"" + item +
                             "\" was changed by another program after it was shown here.\n"
                             "Click Yes to overwrite it with the list shown here\n"
                             "Click No to write nothing and show the new one";
    return MessageBoxA(owner, text.c_str(), "Changed meanwhile", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

bool WriteListAsking(CWnd& window, std::span<const RememberedObject> items,
                     std::span<const ObjectPlace> places, std::optional<DaclInheritance> inheritance,
                     const ListsByKind& lists, ReadParts& shown, ChangeRecorder& recorder,
                     ChangeResults& results) {
    FirstRemembered remembering(recorder);
    // Where no list is expected, none is out of date.
    for (PSECURITY_DESCRIPTOR expected = shown.descriptor.get();; expected = nullptr) {
        ChangeResults written = results;
        DoLongWork(window, [&] {
            WriteListToItems(items, places, inheritance, lists, expected, remembering, written);
            ShowWritten(items.front(), remembering, shown);
        });
        if (!IsOutOfDate(written)) {
            results = std::move(written);
            return true;
        }
        if (!MayOverwriteList(window.GetSafeHwnd(), items.front().Path())) return false;
    }
}

}  // namespace permora
