// verify on a file server's shares: whether the host's mode bits let in whom the lists let in.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/held_object.h"
#include "saved/tree_source.h"
#include "survey/mode_accounts.h"

namespace permora {

class ModeObserver {
  public:
    virtual ~ModeObserver() = default;
    // Before each object, with its path below the top; false ends the check.
    virtual bool Begin(std::string_view path) = 0;
    // Never without a finding.
    virtual void Take(std::string_view path, const ServedFolder& served,
                      const std::vector<ModeFinding>& findings) = 0;
    // The object could not be compared: its permissions could not be read, or (with an error of 0) the
    // share's setting is not followed here, which is told once for each share.
    virtual void Miss(std::string_view path, const ServedFolder& served, DWORD error) = 0;
};

// One thread at a time. Looks at files and folders whose descriptors can be read.
class ModeCheck : private TreeVisitor {
  public:
    // Of FindServedFolders, which is asked once.
    DWORD Prepare();
    // Checks everything from `top`, which stands at `topPath` (as FindTop has it), downwards that is in a
    // share. Does nothing where no share has anything of it.
    void Run(HeldObject& top, const std::string& topPath, ModeObserver& whoListens);

  private:
    bool Visit(const ReadObject& object) override;
    void Compare(const ReadObject& object, std::size_t place, const HostPermissions& permissions);
    bool IsLikeEarlier(std::string_view full, std::size_t place) const;
    std::string FullPath(std::string_view below) const;

    std::vector<ServedFolder> folders;
    std::vector<bool> isTold;  // of those that are not followed here
    SystemModeAccounts accounts;
    // By the place in `folders`, the permissions and the descriptor.
    std::unordered_map<std::string, std::vector<ModeFinding>> known;
    HeldObject* held = nullptr;
    std::string path;
    ModeObserver* observer = nullptr;
};

}  // namespace permora
