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
    : option(place, "--rights", "LIST", RightsHelp(), presence) {
    place.command.Add(*this);
}

std::string RightsOption::Interpret() {
    const std::optional<std::string> text = option.Text();
    if (!text) return {};
    std::string problem;
    const std::optional<DWORD> parsed = ParseRights(*text, problem);
    if (!parsed) return "--rights: " + problem;
    mask = *parsed;
    return {};
}

bool RightsOption::NamesAll() const {
    return NamesFullControl(option.Text().value_or(""));
}

CombinationOption::CombinationOption(OptionPlace place)
    : option(place, "--combination", "NAME", CombinationHelp()) {
    place.command.Add(*this);
}

std::string CombinationOption::Interpret() {
    const std::optional<std::string> text = option.Text();
    if (!text) return {};
    mask = ParseCombination(*text);
    return mask ? "" : "--combination: no combination is called \"" + *text + "\"";
}

ScopeOption::ScopeOption(OptionPlace place) : option(place, "--scope", "N|TEXT", ScopeHelp()) {
    place.command.Add(*this);
}

std::string ScopeOption::Interpret() {
    const std::optional<std::string> text = option.Text();
    if (!text) return {};
    index = ParseScope(*text);
    return index ? "" : "--scope: no scope is called \"" + *text + "\"";
}

}  // namespace permora
