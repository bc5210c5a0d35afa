// The number of a change, as an argument.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/command.h"

namespace permora {

class ChangeNumber : public TextOption {
  public:
    ChangeNumber(OptionPlace place, const char* description);

    std::string Interpret(const std::string& text) override;
    // Nothing when none was given.
    std::optional<std::int64_t> Number() const { return number; }

  private:
    std::optional<std::int64_t> number;
};

}  // namespace permora
