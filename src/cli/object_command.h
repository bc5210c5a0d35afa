// A command that works on objects: files, folders and drives, or shares.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/target.h"

namespace permora {

class ObjectCommand : public Command {
  public:
    std::string Interpret() override;
    // Finds all that the arguments lead to, then works on one object after the other until the user
    // interrupts it. Arguments that lead nowhere are named and count as failures.
    ExitCode Run() final;

  protected:
    enum class Objects { kPaths, kShares };
    ObjectCommand(const CommandParent& parent, const char* name, const char* description,
                  Objects objects = Objects::kPaths,
                  const char* pathDescription =
                      "Files, folders or drives; behind -- also names that begin "
                      "with a dash");

    // Makes sure that the object is known again when its turn comes.
    virtual void Hold(Target& target) { RememberTarget(target); }
    // What comes before the first object. Nothing is done after any result but kDone; the reason was printed.
    virtual ExitCode Begin(const std::vector<Target>& /*targets*/) { return ExitCode::kDone; }
    // The work on one object, which is the subject of the messages. On false, the reason was printed.
    virtual bool Do(const Target& target) = 0;
    virtual bool DoShare(const std::string& /*name*/) { return false; }
    // What comes after the last object. On false, the reason was printed.
    virtual bool End() { return true; }

    // --share: shares may be named in the place of paths.
    struct ShareOption {
        explicit ShareOption(ObjectCommand& command);
    };

    // As typed.
    const std::vector<std::string>& Paths() const { return paths; }
    std::size_t ObjectCount() const { return paths.size() + shares.size(); }

  private:
    std::vector<Target> FindTargets();

    std::vector<std::string> paths;
    std::vector<std::string> shares;
};

}  // namespace permora
