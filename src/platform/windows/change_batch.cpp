#include "platform/windows/change_batch.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/security_change.h"
#include "platform/windows/descriptor_write.h"

namespace permora {
namespace {

constexpr int kMostAttempts = 4;  // on an object that other programs keep changing

}  // namespace

DWORD ChangeBatch::Add(WaitingObject object) {
    objects.push_back(std::move(object));
    return objects.size() < top.BatchSize() ? DWORD{ERROR_SUCCESS} : Write();
}

DWORD ChangeBatch::Write() {
    DWORD error = ERROR_SUCCESS;
    while (!objects.empty() && error == ERROR_SUCCESS)
        error = WriteOnce();
    objects.clear();
    return error;
}

DWORD ChangeBatch::WriteOnce() {
    if (const DWORD error = RecordAll(); error != ERROR_SUCCESS) return error;
    std::vector<DescriptorChange> different;
    for (WaitingObject& waiting : objects)
        if (waiting.folder->version == waiting.assumed)
            WriteOne(waiting, different);
        else
            ComputeAgain(waiting);
    objects = std::exchange(again, {});
    return top.Record(different);
}

DWORD ChangeBatch::RecordAll() {
    std::vector<DescriptorChange> changes;
    std::vector<WaitingObject> described;
    for (WaitingObject& waiting : objects) {
        DescriptorChange change;
        const FoundObject& object = waiting.object;
        const DWORD error =
            DescribeChange(object.handle.get(), object.isFolder, waiting.before, waiting.after, change);
        if (error != ERROR_SUCCESS) {
            Fail(waiting, error);
            continue;
        }
        change.path = object.path;
        changes.push_back(std::move(change));
        described.push_back(std::move(waiting));
    }
    objects = std::move(described);
    return top.Record(changes);
}

void ChangeBatch::WriteOne(WaitingObject& waiting, std::vector<DescriptorChange>& different) {
    const HANDLE handle = waiting.object.handle.get();
    nt::SecurityDescriptor present;
    DWORD error = ReadDescriptor(handle, present);
    if (error == ERROR_SUCCESS && present != waiting.before) {
        // Another program was quicker; what it has made of the object must be recorded, too.
        waiting.before = std::move(present);
        if (++waiting.attempts == kMostAttempts) return Fail(waiting, ERROR_REVISION_MISMATCH);
        return ComputeAgain(waiting);
    }
    if (error == ERROR_SUCCESS) error = WriteDescriptor(handle, waiting.before, waiting.after);
    if (error != ERROR_SUCCESS) return Fail(waiting, error);
    ++counts.changed;
    // A server or a volume may have made something else of it.
    DescriptorChange made;
    if (ReadDescriptor(handle, present) != ERROR_SUCCESS || present == waiting.after) return;
    if (DescribeChange(handle, waiting.object.isFolder, waiting.before, present, made) != ERROR_SUCCESS)
        return;
    made.path = waiting.object.path;
    different.push_back(std::move(made));
}

void ChangeBatch::ComputeAgain(WaitingObject& waiting) {
    const std::shared_ptr<WalkedFolder>& inside = waiting.inside;
    // What is in it waits with it.
    if (inside) ++inside->version;
    if (waiting.folder->isLeftAlone) {
        if (inside) inside->isLeftAlone = true;
        return;
    }
    WayOn wayOn = WayOn::kEnter;
    waiting.assumed = waiting.folder->version;
    waiting.after = waiting.before;
    const DWORD error = changer.Change(waiting.object, *waiting.folder, waiting.after, wayOn);
    if (error != ERROR_SUCCESS) return Fail(waiting, error);
    if (inside) {
        inside->list = ListOf(waiting.after);
        inside->isLeftAlone = wayOn == WayOn::kLeaveAlone;
    }
    if (waiting.after == waiting.before)
        ++counts.unchanged;
    else
        again.push_back(std::move(waiting));
}

void ChangeBatch::Fail(WaitingObject& waiting, DWORD error) {
    changer.PassOver(waiting.object.path, error);
    if (!waiting.inside) return;
    ++waiting.inside->version;
    waiting.inside->list = ListOf(waiting.before);
    waiting.inside->isLeftAlone = changer.AfterFailure() == WayOn::kLeaveAlone;
}

}  // namespace permora
