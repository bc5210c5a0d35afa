#include "manual/grammar_facts.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <set>

namespace permora::manual {
namespace {

// In one order, whatever that of the addresses is.
std::vector<std::string> NamesOf(const std::set<CLI::Option*>& options) {
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const CLI::Option* option : options)
        names.push_back(option->get_name());
    std::ranges::sort(names);
    return names;
}

OptionFacts FactsOfOption(CLI::Option& option) {
    OptionFacts facts;
    if (option.get_positional()) {
        facts.names.push_back(option.get_name(true));
        facts.value = facts.names.front();
    } else {
        for (const std::string& name : option.get_snames())
            facts.names.push_back('-' + name);
        for (const std::string& name : option.get_lnames())
            facts.names.push_back("--" + name);
        if (option.get_items_expected_max() > 0) facts.value = option.get_type_name();
    }
    facts.what = DescriptionOf(option);
    facts.description = option.get_description();
    facts.isRequired = option.get_required();
    facts.takesMany = option.get_items_expected_max() >= CLI::detail::expected_max_vector_size;
    facts.isGreedy = facts.takesMany && option.get_allow_extra_args();
    facts.needs = NamesOf(option.get_needs());
    facts.excludes = NamesOf(option.get_excludes());
    return facts;
}

// All but `hidden`, which may be null.
void AddOptions(CLI::App& parser, const CLI::Option* hidden, CommandFacts& facts) {
    for (CLI::Option* option : parser.get_options()) {
        if (option->get_group().empty() || option == hidden) continue;
        (option->get_positional() ? facts.arguments : facts.options).push_back(FactsOfOption(*option));
    }
}

void AddChoice(CLI::App& group, CommandFacts& facts) {
    const std::size_t first = facts.options.size();
    AddOptions(group, group.get_help_ptr(), facts);
    std::vector<std::string> choice;
    for (std::size_t i = first; i < facts.options.size(); ++i)
        choice.push_back(facts.options[i].names.front());
    for (std::size_t i = first; i < facts.options.size(); ++i)
        facts.options[i].choice = choice;
}

CommandFacts FactsBelow(CLI::App& parser, const std::string& name) {
    CommandFacts facts;
    facts.name = name;
    facts.description = parser.get_description();
    facts.footer = parser.get_footer();
    AddOptions(parser, nullptr, facts);
    for (CLI::App* inner : parser.get_subcommands({})) {
        std::string words = name + (name.empty() ? "" : " ");
        words += inner->get_name();
        if (inner->get_name().empty())
            AddChoice(*inner, facts);
        else if (!inner->get_group().empty())
            facts.commands.push_back(FactsBelow(*inner, words));
    }
    return facts;
}

}  // namespace

CommandFacts FactsOf(CLI::App& parser) {
    return FactsBelow(parser, "");
}

std::string Summary(const std::string& description) {
    std::string line = description;
    std::ranges::replace(line, '\n', ' ');
    constexpr std::size_t kTooShort = 20;  // to say anything
    for (const char* const end : {". ", "; ", ": "})
        if (const std::size_t place = line.find(end); place != line.npos && place >= kTooShort)
            line.resize(place);
    if ((line.ends_with('.') && !line.ends_with("..")) || line.ends_with(':')) line.pop_back();
    return line;
}

}  // namespace permora::manual
