#include "platform/linux/registry/registry_layers.h"

#include <algorithm>

#include "platform/ascii.h"

namespace permora::host {

LayeredKey LayeredKey::Below(const std::string& subPath) const {
    LayeredKey below = *this;
    if (subPath.empty()) return below;
    for (RegistryLayer& layer : below.layers)
        layer.path += '\\' + subPath;
    return below;
}

DWORD LayeredKey::Exists(bool& exists) const {
    for (const RegistryLayer& layer : layers) {
        RegistryDocument document;
        const DWORD error = layer.store.Read(document);
        if (error != ERROR_SUCCESS) return error;
        exists = document.HasKey(layer.path);
        if (exists) break;
    }
    return ERROR_SUCCESS;
}

DWORD LayeredKey::Query(const std::string& name, RegistryValue& value) const {
    for (const RegistryLayer& layer : layers) {
        RegistryDocument document;
        const DWORD error = layer.store.Read(document);
        if (error != ERROR_SUCCESS) return error;
        switch (document.FindValue(layer.path, name, value)) {
            case RegistryDocument::Lookup::kFound:
                return ERROR_SUCCESS;
            case RegistryDocument::Lookup::kDamaged:
                return ERROR_BADDB;
            case RegistryDocument::Lookup::kMissing:
                break;
        }
    }
    return ERROR_FILE_NOT_FOUND;
}

DWORD LayeredKey::Subkeys(std::vector<std::string>& names) const {
    std::vector<std::string> all;
    for (const RegistryLayer& layer : layers) {
        RegistryDocument document;
        const DWORD error = layer.store.Read(document);
        if (error != ERROR_SUCCESS) return error;
        for (std::string& name : document.SubkeysOf(layer.path)) {
            const bool isKnown = std::any_of(all.begin(), all.end(), [&name](const std::string& known) {
                return EqualsIgnoringCase(known, name);
            });
            if (!isKnown) all.push_back(std::move(name));
        }
    }
    names = std::move(all);
    return ERROR_SUCCESS;
}

DWORD LayeredKey::ChooseForWriting(const RegistryLayer*& chosen) const {
    chosen = &layers.front();
    if (writes == RegistryWrites::kToFirst) return ERROR_SUCCESS;
    RegistryDocument document;
    const DWORD error = layers.front().store.Read(document);
    if (error == ERROR_SUCCESS && !document.HasKey(layers.front().path)) chosen = &layers.back();
    return error;
}

DWORD LayeredKey::Create() const {
    const RegistryLayer* layer = nullptr;
    const DWORD error = ChooseForWriting(layer);
    if (error != ERROR_SUCCESS) return error;
    return layer->store.Change([layer](RegistryDocument& document) {
        document.AddKey(layer->path);
        return DWORD{ERROR_SUCCESS};
    });
}

DWORD LayeredKey::Set(const RegistryValue& value) const {
    const RegistryLayer* layer = nullptr;
    const DWORD error = ChooseForWriting(layer);
    if (error != ERROR_SUCCESS) return error;
    return layer->store.Change([&](RegistryDocument& document) {
        document.SetValue(layer->path, value);
        return DWORD{ERROR_SUCCESS};
    });
}

DWORD LayeredKey::Remove() const {
    bool exists = false;
    std::vector<std::string> below;
    const RegistryLayer* layer = nullptr;
    DWORD error = Exists(exists);
    if (error == ERROR_SUCCESS && !exists) error = ERROR_FILE_NOT_FOUND;
    if (error == ERROR_SUCCESS) error = Subkeys(below);
    if (error == ERROR_SUCCESS && !below.empty()) error = ERROR_ACCESS_DENIED;
    if (error == ERROR_SUCCESS) error = ChooseForWriting(layer);
    if (error != ERROR_SUCCESS) return error;
    return layer->store.Change([layer](RegistryDocument& document) {
        // Another program may have changed it since.
        if (!document.HasKey(layer->path) || !document.SubkeysOf(layer->path).empty())
            return DWORD{ERROR_ACCESS_DENIED};
        document.RemoveKey(layer->path);
        return DWORD{ERROR_SUCCESS};
    });
}

}  // namespace permora::host
