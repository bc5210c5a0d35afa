// Reads policy files. Whatever is not known, of another type or there twice is a fault, and nothing of the
// file is used then.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/api/base.h"
#include "policy/policy.h"

namespace permora {

// What names in a policy mean on this machine. Each returns what is wrong with the text, or an empty text.
class PolicyWords {
  public:
    virtual ~PolicyWords() = default;
    // In a rule about objects at `path`.
    virtual std::string FindAccount(const std::string& text, const std::string& path, nt::Sid& sid) = 0;
    virtual std::string FindRights(const std::string& text, DWORD& mask) = 0;
    // The flags of an entry that applies so.
    virtual std::string FindScope(const std::string& text, BYTE& flags) = 0;
};

struct PolicyFault {
    PolicyPlace place;  // line 0: the file as a whole
    std::string text;
};

inline constexpr std::size_t kMostPolicyBytes = std::size_t{1} << 20;

// Nothing: `fault` says why.
std::optional<Policy> ReadPolicy(std::string_view text, PolicyWords& words, PolicyFault& fault);

}  // namespace permora
