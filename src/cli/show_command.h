// The commands that show objects with their access lists: show, and shares show.
#pragma once

#include <cstdint>
#include <string>

#include "cli/json_output.h"
#include "cli/object_command.h"
#include "survey/list_enforcement.h"

namespace permora {

enum class ShowFormat : std::uint8_t { kTable, kJson, kSddl };

// Reads only. An object that cannot be read is left out.
class ShowListsCommand : public ObjectCommand {
  protected:
    using ObjectCommand::ObjectCommand;

    virtual ShowFormat Format() const = 0;
    // The parts of a descriptor that are shown as text.
    virtual SECURITY_INFORMATION Parts() const;
    // Whether entries are shown with where they are inherited from.
    virtual bool WithSources() const { return false; }

    bool Do(const Target& target) final;
    bool DoShare(const std::string& name) final;
    bool End() final;

  private:
    struct ShownObject;

    bool Read(const Target& target, ShownObject& object);
    bool PrintSddl(const std::string& name, PSECURITY_DESCRIPTOR descriptor);
    void PrintTable(const std::string& text);

    EnforcementFinder enforcement;
    Json objects = Json::array();
    const char* separator = "";
};

}  // namespace permora
