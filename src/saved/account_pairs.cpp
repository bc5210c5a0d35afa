#include "saved/account_pairs.h"

#include <utility>

#include "platform/ascii.h"

namespace permora {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Takes a field off the line, up to the comma or the end. False when its quotes are not closed, or something
// follows them.
bool TakeField(std::string_view& line, std::string& field) {
    if (!line.starts_with('"')) {
        const std::size_t end = line.find(',');
        field = WithoutOuterBlanks(line.substr(0, end));
        line.remove_prefix(end == line.npos ? line.size() : end);
        return field.find('"') == field.npos;
    }
    field.clear();
    for (line.remove_prefix(1); !line.empty(); line.remove_prefix(1)) {
        if (line.front() == '"') {
            line.remove_prefix(1);
            if (!line.starts_with('"')) return line.empty() || line.front() == ',';
        }
        field += line.front();
    }
    return false;
}

bool ReadLine(std::string_view line, AccountPair& pair) {
    if (!TakeField(line, pair.old) || !line.starts_with(',')) return false;
    line.remove_prefix(1);
    return TakeField(line, pair.other) && line.empty() && !pair.old.empty() && !pair.other.empty();
}

bool IsTitle(const AccountPair& pair) {
    return pair.line == 1 && EqualsIgnoringCase(pair.old, "old") && EqualsIgnoringCase(pair.other, "new");
}

}  // namespace

bool ReadAccountPair(std::string_view text, AccountPair& pair) {
    const std::size_t middle = text.find('=');
    if (middle == text.npos || text.find('=', middle + 1) != text.npos) return false;
    const std::string_view old = WithoutOuterBlanks(text.substr(0, middle));
    const std::string_view other = WithoutOuterBlanks(text.substr(middle + 1));
    if (old.empty() || other.empty()) return false;
    pair = {std::string(old), std::string(other), 0};
    return true;
}

bool ReadAccountTable(std::string_view table, std::vector<AccountPair>& pairs, std::size_t& badLine) {
    if (table.starts_with(kUtf8Mark)) table.remove_prefix(kUtf8Mark.size());
    std::vector<AccountPair> read;
    for (std::size_t number = 1; !table.empty(); ++number) {
        const std::string_view line = WithoutOuterBlanks(TakeLine(table));
        if (line.empty()) continue;
        AccountPair pair;
        pair.line = number;
        if (!ReadLine(line, pair)) {
            badLine = number;
            return false;
        }
        if (!IsTitle(pair)) read.push_back(std::move(pair));
    }
    pairs = std::move(read);
    return true;
}

}  // namespace permora
