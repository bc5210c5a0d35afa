// A command that works on objects: files, folders and drives, or shares.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/change_output.h"
#include "cli/command.h"
#include "cli/recording.h"
#include "cli/target.h"

namespace permora {

class ObjectCommand : public Command {
  public:
    std::string Interpret() override;
    // Finds all that the arguments lead to, then works on one object after the other until the user
    // interrupts it or the history stops it. Arguments that lead nowhere are named and count as failures.
    ExitCode Run() final;
    // By the paths as they were typed.
    std::string Server() const override;

  protected:
    enum class Objects { kPaths, kShares };
    ObjectCommand(const CommandParent& parent, const char* name, const char* description,
                  Objects objects = Objects::kPaths,
                  const char* pathDescription =
                      "Files, folders or drives; behind -- also names that begin "
                      "with a dash");

    // The change that the command makes with its options; nothing: it writes no lists and no owners.
    struct PlannedChange {
        ChangeKind kind;
        Recording& recording;  // which begins before everything else
    };
    virtual std::optional<PlannedChange> Plan() { return std::nullopt; }
    // Of a command that changes things. It is told here which object comes next, and when something of it was
    // written; what else there is to say of it the command says. Null: the command changes nothing.
    virtual ChangeOutput* Output() { return nullptr; }
    // It is told here of what the arguments do not lead to.
    virtual ChangeOutput* OutputOfMissing() { return Output(); }
    // For a command without an Output: what comes before everything, and how the program ends.
    virtual void Start() {}
    virtual ExitCode Conclude(ExitCode code) { return code; }
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
    bool IsAboutShares() const { return !shares.empty(); }

  private:
    std::vector<Target> FindTargets();
    ExitCode RunChange();
    ExitCode DoAll(Recording* recording);
    bool DoOne(const std::string& name, const Recording* recording, const std::function<bool()>& work);

    std::vector<std::string> paths;
    std::vector<std::string> shares;
};

}  // namespace permora
