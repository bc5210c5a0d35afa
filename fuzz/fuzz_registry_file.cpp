// A registry file, which anyone may have edited: reading and writing it again changes no line, and a value
// that is set reads back, whatever stands around it.
#include <cstdint>
#include <string>

#include "fuzz/require.h"
#include "platform/linux/registry/registry_document.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using permora::Require;
    using permora::host::RegistryDocument;
    using permora::host::RegistryValue;
    constexpr const char* kKey = "HKEY_CURRENT_USER\\Software\\Maker";

    auto document = RegistryDocument::Parse({reinterpret_cast<const char*>(data), size});
    if (!document) return 0;
    const std::string written = document->Text();
    const auto again = RegistryDocument::Parse(written);
    Require(again.has_value(), "what was written can be read");
    Require(again->Text() == written, "writing again changes nothing");

    RegistryValue before;
    if (document->FindValue(kKey, "Text", before) == RegistryDocument::Lookup::kFound) {
        document->SetValue(kKey, before);
        RegistryValue after;
        Require(document->FindValue(kKey, "Text", after) == RegistryDocument::Lookup::kFound,
                "a value that was read can be set");
        Require(after.type == before.type, "its type stays");
    }
    const RegistryValue value{"Bytes", REG_BINARY, {data, data + size}};
    document->SetValue(kKey, value);
    auto changed = RegistryDocument::Parse(document->Text());
    Require(changed.has_value(), "a changed file can be read");
    RegistryValue found;
    Require(changed->FindValue(kKey, "bytes", found) == RegistryDocument::Lookup::kFound &&
                found.data == value.data && found.type == REG_BINARY,
            "a value that was set reads back");
    for (const std::string& name : changed->SubkeysOf(kKey))
        changed->RemoveKey(std::string(kKey) + "\\" + name);
    changed->RemoveKey(kKey);
    Require(changed->HasKey("HKEY_CURRENT_USER\\Software"), "the key above stays");
    return 0;
}
