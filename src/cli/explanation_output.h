// What is printed about why an account has rights or does not have them, and about rights over the network.
#pragma once

#include <string>

#include "cli/json_output.h"
#include "security/rights_explanation.h"
#include "shares/network_rights.h"

namespace permora {

// Indented lines: a row for every right, and remarks.
std::string ExplanationText(const RightsExplanation& rights);
// Members of a JSON object: "explanation", "owner" and "unjudged".
void AddExplanation(const RightsExplanation& rights, Json& json);

// What is left over each share that holds the object, or null where the shares cannot be listed.
Json NetworkJson(const NetworkAnswers& network);

// Members of an entry's JSON object: where it is inherited from.
void AddSource(const EntrySource& source, Json& json);

}  // namespace permora
