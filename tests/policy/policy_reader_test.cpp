#include "policy/policy_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/nt/ace_bits.h"

namespace permora {
namespace {

using testing::HasSubstr;

class FewWords : public PolicyWords {
  public:
    std::string FindAccount(const std::string& text, const std::string& /*path*/, nt::Sid& sid) override {
        if (text == "nobody") return "nobody is unknown";
        sid = nt::Sid(5, {32, static_cast<std::uint32_t>(text.size())});
        return {};
    }
    std::string FindRights(const std::string& text, DWORD& mask) override {
        mask = text == "Read" ? 0x1 : text == "Generic" ? nt::kGenericAll : 0x2;
        return text == "Fly" ? "no right is called Fly" : "";
    }
    std::string FindScope(const std::string& text, BYTE& flags) override {
        flags = nt::kObjectInherit | nt::kInheritOnly;
        return text == "Files" ? "" : "no such scope";
    }
};

std::optional<Policy> Read(const std::string& text, PolicyFault& fault) {
    FewWords words;
    return ReadPolicy(text, words, fault);
}

TEST(PolicyReader, ReadsRules) {
    PolicyFault fault;
    const auto policy = Read(R"(version = 1
[[rule]]
path = 'C:\srv'
below = "*/x"
only = "folders"
optional = true
owner = "anna"
protected = false
includes = [ {allow = "anna", rights = "Read"}, {deny = "bob", rights = "Write", scope = "Files", children_only = true} ]
[[rule]]
path = '\\server\share'
entries = [ {allow = "anna", rights = "Generic"}, {allow = "anna", rights = "Generic", scope = "Files"} ]
[[rule]]
path = "/srv"
entries = []
)",
                             fault);
    ASSERT_TRUE(policy) << fault.text;
    ASSERT_EQ(policy->rules.size(), 3U);
    const PolicyRule& rule = policy->rules[0];
    EXPECT_EQ(rule.place.line, 2U);
    EXPECT_EQ(rule.path, "C:\\srv");
    EXPECT_EQ(rule.below, "*/x");
    EXPECT_EQ(rule.kinds, PolicyKinds::kFolders);
    EXPECT_TRUE(rule.isOptional && rule.owner);
    EXPECT_EQ(rule.isProtected, false);
    EXPECT_EQ(rule.extent, PolicyExtent::kAtLeast);
    ASSERT_EQ(rule.entries.size(), 2U);
    // Denials come first, and what allows may synchronize.
    EXPECT_EQ(rule.entries[0].type, nt::kAccessDeniedType);
    EXPECT_EQ(rule.entries[0].flags, nt::kObjectInherit | nt::kInheritOnly | nt::kNoPropagateInherit);
    EXPECT_EQ(rule.entries[0].mask, 0x2U);
    EXPECT_EQ(rule.entries[1].flags, nt::kObjectInherit | nt::kContainerInherit);
    EXPECT_EQ(rule.entries[1].mask, 0x100001U);
    // Generic rights count where they are handed down alone.
    ASSERT_EQ(policy->rules[1].entries.size(), 2U);
    EXPECT_EQ(policy->rules[1].entries[0].mask, nt::kFileAllAccess);
    EXPECT_EQ(policy->rules[1].entries[1].mask, nt::kGenericAll | 0x100000U);
    EXPECT_EQ(policy->rules[2].extent, PolicyExtent::kExactly);
    EXPECT_FALSE(policy->rules[2].isProtected || policy->rules[2].owner);
}

TEST(PolicyReader, NamesWhatIsWrongWithItsPlace) {
    const std::string start = "version = 1\n[[rule]]\n";
    std::string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += ".a";
    const struct {
        std::string text;
        std::size_t line;
        const char* reason;
    } kCases[] = {
        {"", 0, "version"},
        {"version = 2\n", 1, "version 1 alone"},
        {"version = 1\n", 0, "no rule"},
        {"version = 1\nrule = 3\n", 2, "list of rules"},
        {"version = 1\nextra = 3\n", 2, "\"extra\" is not known"},
        {start + "path = \"/srv\"\n", 2, "says nothing"},
        {start + "protected = true\n", 2, "\"path\" is missing"},
        {start + "path = \"srv\"\nprotected = true\n", 3, "not absolute"},
        {start + "path = \"/s\\u0000v\"\nprotected = true\n", 3, "NUL"},
        {start + "path = 3\n", 3, "no text"},
        {start + "path = \"/srv\"\nprotected = 1\n", 4, "neither true nor false"},
        {start + "path = \"/srv\"\nprotect = true\n", 4, "\"protect\" is not known"},
        {start + "path = \"/srv\"\npath = \"/srv\"\n", 4, "path"},
        {start + "path = \"/srv\"\nonly = \"links\"\n", 4, "files"},
        {start + "path = \"/srv\"\nbelow = \"/x\"\nprotected = true\n", 4, "pattern"},
        {start + "path = \"/srv\"\nbelow = \"a//f\"\nprotected = true\n", 4, "a name is empty"},
        {start + "path = \"/srv\"\nbelow = \"a/..\"\nprotected = true\n", 4, "it has \"..\""},
        {start + "path = \"/srv\"\nbelow = 'a\\f'\nprotected = true\n", 4, "write ?"},
        {start + "path = \"/srv\"\nbelow = \"*./f\"\nprotected = true\n", 4, "write ?"},
        {start + "path = \"/srv\"\nbelow = \"\\u001f\"\nprotected = true\n", 4, "write ?"},
        {start + "path = \"/srv\"\nowner = \"nobody\"\n", 4, "nobody is unknown"},
        {start + "path = \"/srv\"\nentries = []\nincludes = []\n", 5, "either"},
        {start + "path = \"/srv\"\nentries = [ 1 ]\n", 4, "table"},
        {start + "path = \"/srv\"\nentries = [ {allow = \"a\"} ]\n", 4, "\"rights\" is missing"},
        {start + "path = \"/srv\"\nentries = [ {rights = \"Read\"} ]\n", 4, "either allow or deny"},
        {start + "path = \"/srv\"\nentries = [\n {allow = \"a\", rights = \"Fly\"} ]\n", 5, "Fly"},
        {start + "path = \"/srv\"\nentries = [ {allow = \"a\", rights = \"Read\", scope = \"Nowhere\"} ]\n",
         4, "no such scope"},
        {start + "path = \"/srv\"\nentries = [ {allow = \"a\", rights = \"Read\"},\n"
                 "{allow = \"b\", rights = \"Write\"} ]\n",
         5, "the same account and the same scope"},
        {start + "path = \"/srv\"\nprotected = true\n[[rule]]\npath = \"/srv\"\nowner = \"a\"\n", 5,
         "line 2"},
        {start + "path = \"/srv\nprotected = true\n", 3, ""},
        {std::string(kMostPolicyBytes + 1, '#'), 0, "larger"},
        {"version = 1\n\xC3\xAD = 2\n", 2, ""},
        {"version = 1\n\xEF\xBB\xBE = 2\n", 2, ""},
        // Deep in the library.
        {"version = 1\na" + deep + " = 1\n", 2, "dots"},
        {"# " + deep + "\n[a" + deep + "]\n", 2, "dots"},
        {"x = { y = \'\'\'\n\'\'\'\'\', a" + deep + " = \"" + deep + "\" }\n", 2, "dots"},
        {"x = \"\\\"" + deep + "\"\ny = 3\n", 1, "\"x\" is not known"},
        {"version = " + std::string(100, '[') + std::string(100, ']'), 1, ""},
    };
    for (const auto& [text, line, reason] : kCases) {
        PolicyFault fault;
        EXPECT_FALSE(Read(text, fault)) << text.substr(0, 200);
        EXPECT_EQ(fault.place.line, line) << text.substr(0, 200) << fault.text;
        EXPECT_THAT(fault.text, HasSubstr(reason)) << text.substr(0, 200);
    }
}

}  // namespace
}  // namespace permora
