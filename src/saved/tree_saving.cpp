#include "saved/tree_saving.h"

#include "platform/api/errors.h"
#include "platform/security_change.h"

namespace permora {
namespace {

// Whether the writer has refused one object and can go on with the next.
bool IsAboutObject(DWORD error) {
    return error == ERROR_INVALID_NAME || error == ERROR_INVALID_SECURITY_DESCR ||
           error == ERROR_NOT_SUPPORTED;
}

class Saving : public TreeVisitor {
  public:
    Saving(SavedListWriter& text, SavingObserver& listener) : writer(text), observer(listener) {}

    bool Visit(const ReadObject& object) override {
        if (!observer.Begin(object.path)) {
            result = ERROR_OPERATION_ABORTED;
            return false;
        }
        const bool isGap = object.descriptor.empty();
        const DWORD error = isGap ? object.error : writer.Add(object.path, object.kind, object.descriptor);
        if (!isGap && !IsAboutObject(error)) {
            result = error;
            return error == ERROR_SUCCESS;
        }
        return PassOver(object.path, isGap ? object.kind : SavedKind::kUnread, error);
    }

    DWORD Result() const { return result; }

  private:
    bool PassOver(std::string_view path, SavedKind kind, DWORD error) {
        observer.PassOver(path, kind, error);
        result = writer.AddGap(path, kind, error);
        // A form that has no line for it takes note that something is missing, if it can.
        if (IsAboutObject(result)) result = writer.MarkIncomplete();
        return result == ERROR_SUCCESS;
    }

    SavedListWriter& writer;
    SavingObserver& observer;
    DWORD result = ERROR_SUCCESS;
};

}  // namespace

SECURITY_INFORMATION ReadableParts(const HeldObject& top) {
    ReadParts parts;
    const DWORD error = top.ReadSecurity(kDescriptorParts, parts);
    // Any other failure is told where the top itself is read.
    const bool isRefused = error == ERROR_PRIVILEGE_NOT_HELD || error == ERROR_ACCESS_DENIED;
    if (!isRefused) return kDescriptorParts;
    return top.ReadSecurity(kUsualParts, parts) == ERROR_SUCCESS ? kUsualParts : top.PartsAtOnce();
}

DWORD SaveTree(const HeldObject& top, SECURITY_INFORMATION parts, SavedListWriter& writer,
               SavingObserver& observer) {
    Saving saving(writer, observer);
    (void)ReadTree(top, parts, saving);
    return saving.Result();
}

}  // namespace permora
