// What is printed about why an account has rights or does not have them.
#pragma once

#include <string>

#include "cli/json_output.h"
#include "security/rights_explanation.h"
#include "shares/network_rights.h"

namespace permora {

struct PrintedExplanation {
    RightsExplanation rights;
    NetworkAnswers network;
};

// Indented lines: a row for every right, remarks, and what the shares leave.
std::string ExplanationText(const PrintedExplanation& explanation);

// Members of a JSON object: "explanation", "owner", "unjudged" and "shares".
void AddExplanation(const PrintedExplanation& explanation, Json& json);

// Members of an entry's JSON object: where it is inherited from.
void AddSource(const EntrySource& source, Json& json);

}  // namespace permora
