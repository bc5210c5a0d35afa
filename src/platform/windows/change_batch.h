// Changes of a walk that wait for each other: many are recorded at once, since a record that outlives a
// failure of power takes its time, and only then written.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"
#include "platform/tree_security.h"
#include "platform/windows/changed_top.h"

namespace permora {

// What the objects in a folder inherit from.
struct WalkedFolder {
    DWORD readError = ERROR_SUCCESS;  // why its list is not known; then nothing in it can be set
    nt::Acl list;                     // what stands on it, or will when what waits is written
    bool isLeftAlone = false;         // nothing more in it is changed
    // Grows when something else came of the folder than was assumed; what was computed for the objects in it
    // is then worth nothing.
    unsigned version = 0;
};

struct FoundObject {
    UniqueHandle handle;  // open for READ_CONTROL, FILE_READ_ATTRIBUTES and for writing
    nt::ObjectKind kind = nt::ObjectKind::kFile;
    bool isFolder = false;  // a junction is none, and inherits as one
    std::string path;       // below the walked folder
};

enum class WayOn { kEnter, kLeaveAlone };

// What a walk does to each object.
class DescriptorChanger {
  public:
    virtual ~DescriptorChanger() = default;

    // `after` is what the object has, and becomes what it is to get. `wayOn` is about what is in it.
    virtual DWORD Change(const FoundObject& object, const WalkedFolder& folder, nt::SecurityDescriptor& after,
                         WayOn& wayOn) = 0;
    // What becomes of the objects in a folder that could not be changed.
    virtual WayOn AfterFailure() const = 0;
    // The object is as it was.
    virtual void PassOver(const std::string& path, DWORD error) = 0;
};

struct WaitingObject {
    FoundObject object;
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
    std::shared_ptr<WalkedFolder> folder;  // that it is in
    std::shared_ptr<WalkedFolder> inside;  // its own, of a folder
    unsigned assumed = 0;                  // the version of `folder` from which `after` was computed
    int attempts = 0;                      // that other programs were quicker
};

class ChangeBatch {
  public:
    // All outlive this.
    ChangeBatch(DescriptorChanger& changes, RecordedTop& records, TreeCounts& totals)
        : changer(changes), top(records), counts(totals) {}

    // A folder is added before what is in it. 0, or the failure of a record.
    DWORD Add(WaitingObject object);
    // Records and writes all that waits. An error is the failure of a record; nothing waits any more.
    DWORD Write();

  private:
    DWORD WriteOnce();
    DWORD RecordAll();
    void WriteOne(WaitingObject& waiting, std::vector<DescriptorChange>& different);
    void ComputeAgain(WaitingObject& waiting);
    void Fail(WaitingObject& waiting, DWORD error);

    DescriptorChanger& changer;
    RecordedTop& top;
    TreeCounts& counts;
    std::vector<WaitingObject> objects;
    std::vector<WaitingObject> again;  // of the round that is running
};

}  // namespace permora
