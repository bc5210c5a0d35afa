#include "platform/linux/shares/share_table.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <utility>

#include "platform/linux/accounts/account_names.h"
#include "platform/linux/registry/registry_places.h"
#include "platform/linux/registry/registry_store.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

namespace {

const std::string kSharesKey =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\LanmanServer\\Shares";
const std::string kSecurityKey = kSharesKey + "\\Security";

RegistryStore MachineStore() {
    return {MachineRegistryFolder(), RegistryAudience::kEveryone};
}

// --- The fields of one share: "Name=value" each.

using Fields = std::vector<std::string>;

Fields SplitFields(const std::vector<std::uint8_t>& data) {
    Fields fields;
    std::string_view rest(reinterpret_cast<const char*>(data.data()), data.size());
    while (!rest.empty() && rest.front() != '\0') {
        fields.emplace_back(rest.substr(0, rest.find('\0')));
        rest.remove_prefix(std::min(fields.back().size() + 1, rest.size()));
    }
    return fields;
}

std::vector<std::uint8_t> JoinFields(const Fields& fields) {
    std::vector<std::uint8_t> data;
    for (const std::string& text : fields)
        data.insert(data.end(), text.c_str(), text.c_str() + text.size() + 1);
    data.push_back(0);
    return data;
}

std::string* FindField(Fields& fields, std::string_view field) {
    const auto found = std::find_if(fields.begin(), fields.end(), [field](std::string_view text) {
        return text.starts_with(field) && text.substr(field.size()).starts_with('=');
    });
    return found != fields.end() ? &*found : nullptr;
}

std::optional<std::string> FieldOf(Fields& fields, std::string_view field) {
    const std::string* text = FindField(fields, field);
    if (text == nullptr) return std::nullopt;
    return text->substr(field.size() + 1);
}

void SetField(Fields& fields, std::string_view field, std::string_view value) {
    std::string text(field);
    text.append("=").append(value);
    if (std::string* old = FindField(fields, field); old != nullptr)
        *old = std::move(text);
    else
        fields.push_back(std::move(text));
}

// A missing field leaves `number` unchanged.
bool ReadNumber(Fields& fields, std::string_view field, DWORD& number) {
    const std::optional<std::string> text = FieldOf(fields, field);
    if (!text) return true;
    const char* end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, number);
    return error == std::errc() && stop == end;
}

// --- Reading.

std::optional<Share> ShareOf(const RegistryValue& value) {
    if (value.type != REG_MULTI_SZ) return std::nullopt;
    Share share;
    share.name = value.name;
    Fields fields = SplitFields(value.data);
    const bool areNumbers = ReadNumber(fields, "Type", share.type) &&
                            ReadNumber(fields, "Permissions", share.permissions) &&
                            ReadNumber(fields, "MaxUses", share.maxUses);
    std::optional<std::string> path = FieldOf(fields, "Path");
    const bool isFolder = (share.type & ~STYPE_SPECIAL) == STYPE_DISKTREE;
    if (!areNumbers || (isFolder && !path)) return std::nullopt;
    share.path = std::move(path).value_or("");
    share.remark = FieldOf(fields, "Remark").value_or("");
    return share;
}

// The name as the document spells it; nothing when it keeps no such share.
std::optional<std::string> FindKeptName(const RegistryDocument& document, std::string_view name) {
    for (const std::string& kept : document.ValueNamesOf(kSharesKey))
        if (IsSameShare(kept, name)) return kept;
    return std::nullopt;
}

// --- Writing.

void ChangeFields(RegistryValue& value, const ShareChange& change) {
    Fields fields = SplitFields(value.data);
    if (change.remark) SetField(fields, "Remark", *change.remark);
    if (change.maxUses) SetField(fields, "MaxUses", std::to_string(*change.maxUses));
    value.data = JoinFields(fields);
}

// The error for changing or removing a share that does not exist.
DWORD NotKept(std::string_view name) {
    return IsSameShare(name, InterProcessShare().name) ? ERROR_NOT_SUPPORTED : NERR_NetNameNotFound;
}

}  // namespace

DWORD ShareTable::List(std::vector<Share>& shares) const {
    RegistryDocument document;
    const DWORD error = MachineStore().Read(document);
    if (error != ERROR_SUCCESS) return error;
    std::vector<Share> found;
    std::set<std::u16string> known;  // to the registry "Ä" and "ä" are two keys
    for (const RegistryValue& value : document.ValuesOf(kSharesKey)) {
        std::optional<Share> share = IsPlainAccountName(value.name) ? ShareOf(value) : std::nullopt;
        if (share && known.insert(ShareKey(share->name)).second) found.push_back(*std::move(share));
    }
    const Share interProcess = InterProcessShare();
    if (!known.contains(ShareKey(interProcess.name))) found.push_back(interProcess);
    shares = std::move(found);
    return ERROR_SUCCESS;
}

DWORD ShareTable::ReadDescriptor(Share& share) const {
    RegistryDocument document;
    const DWORD error = MachineStore().Read(document);
    if (error != ERROR_SUCCESS) return error;
    RegistryValue value;
    const bool isGone =
        document.FindValue(kSharesKey, share.name, value) == RegistryDocument::Lookup::kMissing;
    if (isGone && !IsInterProcess(share)) return NERR_NetNameNotFound;
    const auto lookup = document.FindValue(kSecurityKey, share.name, value);
    if (lookup == RegistryDocument::Lookup::kMissing) return ERROR_SUCCESS;
    if (lookup == RegistryDocument::Lookup::kDamaged || value.type != REG_BINARY ||
        !nt::SecurityDescriptor::FromBytes(value.data)) {
        return ERROR_INVALID_SECURITY_DESCR;
    }
    share.descriptor = std::move(value.data);
    return ERROR_SUCCESS;
}

DWORD ShareTable::Change(std::string_view name, const ShareChange& change) const {
    return MachineStore().Change([&](RegistryDocument& document) -> DWORD {
        const std::optional<std::string> kept = FindKeptName(document, name);
        if (!kept) return NotKept(name);
        RegistryValue value;
        const auto lookup = document.FindValue(kSharesKey, *kept, value);
        if (lookup != RegistryDocument::Lookup::kFound || !ShareOf(value)) return ERROR_BADDB;
        if (change.descriptor && change.descriptor->empty())
            document.RemoveValue(kSecurityKey, *kept);
        else if (change.descriptor)
            document.SetValue(kSecurityKey, {*kept, REG_BINARY, *change.descriptor});
        ChangeFields(value, change);
        if (change.remark || change.maxUses) document.SetValue(kSharesKey, value);
        return ERROR_SUCCESS;
    });
}

DWORD ShareTable::Add(const Share& share) const {
    return MachineStore().Change([&share](RegistryDocument& document) -> DWORD {
        if (FindKeptName(document, share.name)) return NERR_DuplicateShare;
        const Fields fields = {"CSCFlags=0",
                               "MaxUses=" + std::to_string(share.maxUses),
                               "Path=" + share.path,
                               "Permissions=" + std::to_string(share.permissions),
                               "Remark=" + share.remark,
                               "Type=" + std::to_string(share.type)};
        document.SetValue(kSharesKey, {share.name, REG_MULTI_SZ, JoinFields(fields)});
        // A list that an earlier share of this name left behind would apply to this one.
        document.RemoveValue(kSecurityKey, share.name);
        if (!share.descriptor.empty())
            document.SetValue(kSecurityKey, {share.name, REG_BINARY, share.descriptor});
        return ERROR_SUCCESS;
    });
}

DWORD ShareTable::Remove(std::string_view name) const {
    return MachineStore().Change([name](RegistryDocument& document) {
        const std::optional<std::string> kept = FindKeptName(document, name);
        if (!kept) return NotKept(name);
        document.RemoveValue(kSharesKey, *kept);
        document.RemoveValue(kSecurityKey, *kept);
        return ERROR_SUCCESS;
    });
}

}  // namespace permora::host
