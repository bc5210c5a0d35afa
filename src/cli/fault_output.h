// What verify finds, as lines or as JSON.
#pragma once

#include <string>
#include <vector>

#include "cli/json_output.h"
#include "survey/mode_comparison.h"

namespace permora {

enum class FaultForm : std::uint8_t { kLines, kJson };

// All paths are as the user would type them.
class FaultOutput {
  public:
    explicit FaultOutput(FaultForm wanted) : form(wanted) {}

    void Add(const std::string& path, Remark remark);
    // What could not be looked at: lines of it belong on standard error, and are not printed here.
    void AddMissed(const std::string& path, Remark remark, DWORD error);
    // A line, or an object, for each remark, with all accounts that it is about.
    void AddModes(const std::string& path, const std::string& share,
                  const std::vector<ModeFinding>& findings);
    // `rest` has further members of the JSON.
    void End(const Json& rest);

  private:
    const FaultForm form;
    JsonPrinter array{"verify"};
};

}  // namespace permora
