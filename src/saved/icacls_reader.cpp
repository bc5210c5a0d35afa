// Sources: the tool's documentation (its options /save and /restore), and the look of what it writes:
// UTF-16LE, a path relative to the folder that /restore is given, then its DACL in SDDL on a line of its own.
#include "saved/icacls_reader.h"

#include <optional>
#include <span>
#include <utility>

#include "platform/api/security.h"
#include "platform/resources.h"
#include "saved/saved_path.h"
#include "saved/utf16.h"

namespace permora {

IcaclsReader::IcaclsReader(SavedLines text) : lines(std::move(text)) {
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

// By the system's own reading: words such as LA and DA mean accounts of this machine and its domain here, as
// they do when the tool reads the text.
bool IcaclsReader::TakeDescriptor(const std::string& sddl) {
    if (lastDescriptor && sddl == lastSddl) return true;
    PSECURITY_DESCRIPTOR read = nullptr;
    ULONG size = 0;
    const bool isText = sddl.starts_with("D:") && sddl.find('\0') == sddl.npos;
    if (!isText || ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1, &read,
                                                                        &size) == FALSE)
        return Refuse("the list is not understood");
    const UniqueLocal<void> owned(read);
    const std::span bytes(static_cast<const std::uint8_t*>(read), size);
    std::optional<nt::SecurityDescriptor> value = nt::SecurityDescriptor::FromBytes(bytes);
    if (!value || value->owner || value->group || (value->control & nt::kSaclPresent) != 0)
        return Refuse("this is no DACL and nothing else");
    auto made = std::make_shared<SavedDescriptor>();
    made->bytes.assign(bytes.begin(), bytes.end());
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
