#include "cli/map_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <fstream>
#include <utility>

#include "cli/argument_shield.h"
#include "security/account_lookup.h"
#include "security/account_record.h"

namespace permora {
namespace {

// Room for half a million accounts.
constexpr std::size_t kMaxTableBytes = std::size_t{32} << 20;

// Returns what is wrong, or an empty text.
std::string ReadTable(const std::string& path, std::string& table) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return "cannot be opened";
    std::string read(kMaxTableBytes + 1, '\0');
    file.read(read.data(), static_cast<std::streamsize>(read.size()));
    if (file.bad() || (file.fail() && !file.eof())) return "cannot be read";
    if (file.gcount() > static_cast<std::streamsize>(kMaxTableBytes))
        return "is too long for a table of accounts";
    read.resize(static_cast<std::size_t>(file.gcount()));
    table = std::move(read);
    return {};
}

}  // namespace

MapOptions::MapOptions(Command& owner) : command(owner) {
    CLI::Option& pairs =
        *owner.Parser()
             .add_option("--map", typedPairs,
                         "Put the account NEW in the place of OLD: in owners, groups, entries and their\n"
                         "conditions. Both are names or SIDs. May be given several times; all are\n"
                         "exchanged at once, not one after the other")
             ->type_name("OLD=NEW")
             ->allow_extra_args(false);
    DescribeValue(pairs, {.kind = ValueKind::kAccountPair});
    CLI::Option& table =
        *owner.Parser()
             .add_option("--map-file", tableFile, "The same from a table: a line OLD,NEW for each account")
             ->type_name("CSV");
    DescribeValue(table, {.kind = ValueKind::kFile});
}

// The pairs in the order of their arguments and lines.
std::string MapOptions::ReadPairs(std::vector<AccountPair>& pairs) const {
    for (const std::string& text : typedPairs) {
        AccountPair pair;
        if (!ReadAccountPair(Unshielded(text), pair)) return "--map: not OLD=NEW: " + Unshielded(text);
        pairs.push_back(std::move(pair));
    }
    if (!tableFile) return {};
    const std::string path = Unshielded(*tableFile);
    std::string table;
    if (const std::string problem = ReadTable(path, table); !problem.empty()) return path + ": " + problem;
    std::vector<AccountPair> rows;
    std::size_t badLine = 0;
    if (!ReadAccountTable(table, rows, badLine))
        return path + ", line " + std::to_string(badLine) + ": not OLD,NEW";
    std::ranges::move(rows, std::back_inserter(pairs));
    return {};
}

std::string MapOptions::PlaceOf(const AccountPair& pair) const {
    return pair.line == 0 ? "--map" : Unshielded(*tableFile) + ", line " + std::to_string(pair.line);
}

std::string MapOptions::Interpret() {
    std::vector<AccountPair> pairs;
    if (std::string problem = ReadPairs(pairs); !problem.empty()) return problem;
    const std::string server = pairs.empty() ? std::string() : command.Server();
    for (AccountPair& pair : pairs) {
        AccountRecord old;
        AccountRecord other;
        std::string problem = FindTypedAccount(pair.old, old, server);
        if (problem.empty()) problem = FindTypedAccount(pair.other, other, server);
        if (problem.empty() && !Add(*old.sid, *other.sid, pair))
            problem = pair.old + " is to become two different accounts";
        if (!problem.empty()) return PlaceOf(pair) + ": " + problem;
    }
    return {};
}

bool MapOptions::Add(const nt::Sid& old, const nt::Sid& other, AccountPair typed) {
    if (!exchange.Add(old, other)) return false;
    mapped.push_back({old, other, std::move(typed)});
    return true;
}

void MapOptions::LookFor(const SavedObject& object) {
    if (exchange.IsEmpty() || !object.descriptor || object.descriptor == lookedThrough) return;
    lookedThrough = object.descriptor;
    nt::SecurityDescriptor copy = lookedThrough->value;
    exchange.Apply(copy);
}

void MapOptions::TellChains(ConsoleMessages& messages) const {
    messages.SetSubject("--map");
    for (const Mapped& one : mapped) {
        const auto next = std::ranges::find(mapped, one.other, &Mapped::old);
        if (next == mapped.end() || next->old == next->other || one.old == one.other) continue;
        messages.Say(one.typed.old + " becomes " + one.typed.other + " and " + next->typed.old + " becomes " +
                     next->typed.other + ": both at once, so nothing of " + one.typed.old + "'s becomes " +
                     next->typed.other + "'s");
    }
}

void MapOptions::TellUnused(const std::string& place, ConsoleMessages& messages) const {
    messages.SetSubject("");
    const std::vector<nt::Sid> unused = exchange.Unused();
    for (const Mapped& one : mapped)
        if (std::ranges::find(unused, one.old) != unused.end())
            messages.Say(one.typed.old + " is nowhere in " + place);
}

}  // namespace permora
