// The options for the rights of an entry and its scope.
#pragma once

#include <optional>
#include <string>

#include "cli/command.h"
#include "platform/api/base.h"

namespace permora {

// --rights.
class RightsOption final : public TextOption {
  public:
    RightsOption(OptionPlace place, Presence presence);
    std::string Interpret(const std::string& text) override;

    // Without SYNCHRONIZE; 0 when the option was not given, and never otherwise.
    DWORD Mask() const { return mask; }
    // Whether the user named full control as a whole, rather than all rights one by one or as a mask.
    bool NamesAll() const;

  private:
    DWORD mask = 0;
};

// --combination.
class CombinationOption final : public TextOption {
  public:
    explicit CombinationOption(OptionPlace place);
    std::string Interpret(const std::string& text) override;

    // Of one of kUsableCombinations; nothing when the option was not given.
    std::optional<DWORD> Mask() const { return mask; }

  private:
    std::optional<DWORD> mask;
};

// --scope.
class ScopeOption final : public TextOption {
  public:
    explicit ScopeOption(OptionPlace place);
    std::string Interpret(const std::string& text) override;

    // The place in kInheritanceScopes; nothing when the option was not given.
    std::optional<int> Index() const { return index; }

  private:
    std::optional<int> index;
};

}  // namespace permora
