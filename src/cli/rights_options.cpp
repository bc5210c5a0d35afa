#include "cli/rights_options.h"

#include "cli/vocabulary.h"
#include "security/access_rights.h"
#include "wizard/account_rights.h"

namespace permora {
namespace {

std::string RightsHelp() {
    std::string help = "Rights, separated by commas, as masks like 0x1200a9 or as names:";
    for (const AccessRight& right : kAccessRights)
        help += std::string("\n  ") + right.listName;
    return help;
}

std::string CombinationHelp() {
    std::string help = "The rights of a ready-made combination and no others:";
    for (const UsableCombination& combination : kUsableCombinations)
        help += std::string("\n  ") + combination.text;
    return help;
}

std::string ScopeHelp() {
    std::string help = "Where the entry applies, as number or text; without it 1 on folders, 0 on files:";
    for (std::size_t i = 0; i < kInheritanceScopes.size(); ++i)
        help += "\n  " + std::to_string(i) + " " + kInheritanceScopes.at(i).text;
    return help;
}

}  // namespace

RightsOption::RightsOption(OptionPlace place, Presence presence)
    : TextOption(place, "--rights", "LIST", RightsHelp(), presence) {
    ValueDescription values{.kind = ValueKind::kKnownList};
    for (const AccessRight& right : kAccessRights)
        values.known.push_back({right.listName, ""});
    Describe(values);
}

std::string RightsOption::Interpret(const std::string& text) {
    std::string problem;
    mask = ParseRights(text, problem).value_or(0);
    return problem.empty() ? problem : "--rights: " + problem;
}

bool RightsOption::NamesAll() const {
    return NamesFullControl(Text().value_or(""));
}

CombinationOption::CombinationOption(OptionPlace place)
    : TextOption(place, "--combination", "NAME", CombinationHelp()) {
    ValueDescription values{.kind = ValueKind::kKnown};
    for (const UsableCombination& combination : kUsableCombinations)
        values.known.push_back({combination.text, ""});
    Describe(values);
}

std::string CombinationOption::Interpret(const std::string& text) {
    mask = ParseCombination(text);
    return mask ? "" : "--combination: no combination is called \"" + text + "\"";
}

ScopeOption::ScopeOption(OptionPlace place) : TextOption(place, "--scope", "N|TEXT", ScopeHelp()) {
    ValueDescription values{.kind = ValueKind::kKnown};
    for (std::size_t i = 0; i < kInheritanceScopes.size(); ++i) {
        const std::string text = kInheritanceScopes.at(i).text;
        values.known.push_back({std::to_string(i), text});
        values.known.push_back({text, ""});
    }
    Describe(values);
}

std::string ScopeOption::Interpret(const std::string& text) {
    index = ParseScope(text);
    return index ? "" : "--scope: no scope is called \"" + text + "\"";
}

}  // namespace permora
