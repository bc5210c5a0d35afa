// What an object has of its own, in a line for people. Pure.
#pragma once

#include <functional>
#include <string>

#include "platform/api/base.h"
#include "platform/nt/security_descriptor.h"
#include "platform/tree_reading.h"
#include "survey/remark.h"
#include "survey/survey.h"

namespace permora {

// Adds to a line of parts with semicolons between them; nothing for an empty part.
void AddPart(std::string& line, const std::string& part);

using NameOfSid = std::function<std::string(const nt::Sid& sid)>;

// Whether inherited entries are in the line as well: at the top of a tree they are what all below begins
// with.
enum class ShownEntries : std::uint8_t { kOwn, kAll };

// "+ EXAMPLE\anna: Modify; - Everyone: Write (Subfolders only)": what allows has a plus, what denies a minus.
// The usual scope is not named, and of very many entries only the first are. Empty: there are none.
std::string EntriesText(const nt::SecurityDescriptor& descriptor, TreeObjectKind kind, ShownEntries shown,
                        const NameOfSid& nameOf);

// The same with what else sets the object apart: "protected; owner EXAMPLE\anna; + ...". `row.security` is
// not null.
std::string DepartureText(const SurveyRow& row, const NameOfSid& nameOf);

// The remarks in words: "has entries of its own; lets everyone write". Why it could not be read stands behind
// them.
std::string RemarksText(RemarkSet remarks, DWORD error);

}  // namespace permora
