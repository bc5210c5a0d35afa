// Sources: the tool's documentation (its options /save and /restore), and the look of what it writes:
// UTF-16LE, a path relative to the folder that /restore is given, then its DACL in SDDL on a line of its own.
#include "saved/icacls_reader.h"

#include <optional>
#include <utility>

#include "platform/nt/sddl.h"
#include "platform/nt/security_descriptor.h"
#include "saved/saved_path.h"
#include "saved/utf16.h"

namespace permora {

IcaclsReader::IcaclsReader(SavedLines text, nt::SddlAccounts meanings)
    : lines(std::move(text)), accounts(std::move(meanings)) {
    head.form = SavedForm::kIcacls;
    head.parts = DACL_SECURITY_INFORMATION;
    lines.SetUnit(LineUnit::kTwoBytes);
}

bool IcaclsReader::Refuse(const char* reason) {
    problem = {lines.Number(), reason};
    return false;
}

// False at the end of the text too.
bool IcaclsReader::NextLine(std::string& line) {
    std::string_view bytes;
    if (!lines.Next(bytes, problem)) return false;
    std::optional<std::string> text = Utf8FromUtf16(bytes);
    if (!text) return Refuse("this is no UTF-16");
    line = std::move(*text);
    if (line.ends_with('\r')) line.pop_back();
    return true;
}

// Words such as LA and DA mean accounts of the machine or domain that has saved the list, and nothing in the
// text tells which that was. Elsewhere they would become others.
bool IcaclsReader::TakeDescriptor(const std::string& sddl) {
    if (lastDescriptor && sddl == lastSddl) return true;
    std::optional<nt::SecurityDescriptor> value;
    if (sddl.starts_with("D:") && sddl.find('\0') == sddl.npos) value = nt::FromSddl(sddl, accounts);
    if (!value)
        return Refuse(
            "the list is not understood, or names an account by a word (LA, DA) and not by its SID, and whom "
            "the "
            "word means is not known (--word)");
    if (value->owner || value->group || (value->control & nt::kSaclPresent) != 0)
        return Refuse("this is no DACL and nothing else");
    auto made = std::make_shared<SavedDescriptor>();
    if (!value->AppendTo(made->bytes)) return Refuse("the list is too large");
    made->value = std::move(*value);
    lastDescriptor = std::move(made);
    lastSddl = sddl;
    return true;
}

bool IcaclsReader::Next(SavedObject& object, SavedFault& fault) {
    std::string path;
    std::string sddl;
    if (!problem.reason.empty() || !NextLine(path)) {
        fault = problem;
        return false;
    }
    const bool isPath = IsPathBelow(path) ? true : Refuse("this is no relative path");
    if (isPath && !NextLine(sddl) && problem.reason.empty())
        Refuse("the text was cut off: the list of this object is missing");
    if (!problem.reason.empty() || !TakeDescriptor(sddl)) {
        fault = problem;
        return false;
    }
    object = {std::move(path), SavedKind::kUnknown, lastDescriptor, ERROR_SUCCESS};
    return true;
}

}  // namespace permora
