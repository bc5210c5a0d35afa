// Conditions and resource attributes: typed text, and the bytes after an entry's SID, which anyone may have
// written. The first byte selects one.
#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include "fuzz/require.h"
#include "platform/nt/conditional_expression.h"
#include "platform/nt/resource_attribute.h"

namespace permora::nt {
namespace {

struct Form {
    std::optional<std::string> (*toText)(std::span<const std::uint8_t>, SddlWords);
    std::optional<std::vector<std::uint8_t>> (*fromText)(std::string_view, const SddlAccounts&);
};
constexpr Form kForms[] = {{ConditionToText, ConditionFromText},
                           {ResourceAttributeToText, ResourceAttributeFromText}};

void CheckText(const Form& form, std::string_view text) {
    const SddlAccounts machine(Sid(5, {21, 1, 2, 3}));
    const auto stored = form.fromText(text, machine);
    if (!stored) return;
    Require(stored->size() % 4 == 0, "what was read from text fills an entry");
    for (const SddlWords words : {SddlWords::kAbbreviations, SddlWords::kNumbers}) {
        const auto written = form.toText(*stored, words);
        Require(written.has_value(), "what was read from text can be written as text");
        Require(form.fromText(*written, {}) == stored, "text that was written means the same");
    }
}

void CheckBytes(const Form& form, std::span<const std::uint8_t> stored) {
    const auto text = form.toText(stored, SddlWords::kAbbreviations);
    if (!text) return;
    const auto read = form.fromText(*text, {});
    // The names of local attributes may be words of the grammar.
    if (!read) return;
    Require(form.toText(*read, SddlWords::kAbbreviations) == text, "text that was written is written again");
    const bool isAttribute = form.toText == ResourceAttributeToText;
    const std::size_t common = std::min(read->size(), stored.size());
    Require(!isAttribute || std::ranges::equal(std::span(*read).first(common), stored.first(common)),
            "a resource attribute comes back byte for byte");
}

}  // namespace
}  // namespace permora::nt

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora::nt;
    if (size == 0) return 0;
    const Form& form = kForms[data[0] & 1U];
    const std::span input(data + 1, size - 1);
    if ((data[0] & 2U) != 0)
        CheckText(form, {reinterpret_cast<const char*>(input.data()), input.size()});
    else
        CheckBytes(form, input);
    return 0;
}
