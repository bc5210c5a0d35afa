// What is printed of the differences between two trees.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/json_output.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "cli/tree_progress.h"
#include "saved/tree_comparison.h"
#include "security/descriptor_comparison.h"

namespace permora {

// Rows that differ, for programs.
Json RowsJson(const std::vector<ComparedRow>& rows);

enum class DifferenceForm { kText, kJson };

// Prints each difference as it comes: on standard output, what could not be read on standard error too.
class DifferenceOutput : public ComparisonObserver {
  public:
    // `compared` is the tree as it is, below which the paths are; `comparedParts` of its descriptors.
    DifferenceOutput(DifferenceForm outputForm, Progress mode, const Target& compared,
                     SECURITY_INFORMATION comparedParts, ConsoleMessages& console)
        : form(outputForm), target(compared), parts(comparedParts), messages(console), line(mode) {}

    bool Begin(std::string_view path) override;
    void Differ(const TreeDifference& difference) override;
    void End();

    std::size_t Differences() const { return differences; }

  private:
    void PrintText(const TreeDifference& difference, const std::string& path);
    void PrintJson(const TreeDifference& difference, const std::string& path);

    const DifferenceForm form;
    const Target& target;
    const SECURITY_INFORMATION parts;
    ConsoleMessages& messages;
    ProgressLine line;
    JsonPrinter array{"compare"};
    std::size_t objects = 0;
    std::size_t differences = 0;
};

}  // namespace permora
