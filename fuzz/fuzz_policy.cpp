// Policy files: every text is read or refused with a place in it, and what was read keeps its promises.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "policy/path_pattern.h"
#include "policy/policy_reader.h"

namespace permora {
namespace {

// Every other word is known.
class HalfKnownWords : public PolicyWords {
  public:
    std::string FindAccount(const std::string& text, const std::string& /*path*/, nt::Sid& sid) override {
        sid = nt::Sid(5, {32, static_cast<std::uint32_t>(text.size())});
        return Judge(text);
    }
    std::string FindRights(const std::string& text, DWORD& mask) override {
        mask = 1;
        return Judge(text);
    }
    std::string FindScope(const std::string& text, BYTE& flags) override {
        flags = static_cast<BYTE>(text.size() % 16);
        return Judge(text);
    }

  private:
    static std::string Judge(const std::string& text) { return text.size() % 2 == 0 ? "" : "not known"; }
};

}  // namespace
}  // namespace permora

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    using namespace permora;
    HalfKnownWords words;
    PolicyFault fault;
    const auto policy = ReadPolicy(text, words, fault);
    Require(policy.has_value() == fault.text.empty(), "a refusal has a reason");
    if (!policy) return 0;
    for (const PolicyRule& rule : policy->rules) {
        Require(!rule.path.empty() && (rule.owner || rule.isProtected || rule.extent),
                "a rule says something of something");
        Require(
            std::ranges::is_partitioned(rule.entries, [](const nt::Ace& entry) { return entry.type == 1; }),
            "denials come first");
        if (!rule.below.empty() && MatchesPattern(rule.below, "one\\two\\" + rule.below))
            Require(MayMatchBelow(rule.below, "one\\two"), "what may be below is looked for");
    }
    return 0;
}
