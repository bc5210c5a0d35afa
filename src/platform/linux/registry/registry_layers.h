// Keys that are kept in two places and look like one.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/linux/registry/registry_store.h"

namespace permora::host {

// Where a key lies in one store.
struct RegistryLayer {
    RegistryStore store;
    std::string path;
};

enum class RegistryWrites {
    kToFirst,      // the others are there to be read
    kWhereItLies,  // what is new goes to the last
};

// A key as it is seen: what an earlier layer has hides what a later one has. Every call looks at the files as
// they are at that moment.
class LayeredKey {
  public:
    LayeredKey(std::vector<RegistryLayer> places, RegistryWrites rule)
        : layers(std::move(places)), writes(rule) {}

    // The key at `subPath` below this one; the key itself when that is empty.
    LayeredKey Below(const std::string& subPath) const;

    // All return 0 or an error code. A later layer is read only when the earlier ones do not have the value.
    DWORD Exists(bool& exists) const;
    // ERROR_FILE_NOT_FOUND, or ERROR_BADDB for a damaged value.
    DWORD Query(const std::string& name, RegistryValue& value) const;
    // The names of the keys right below, each once.
    DWORD Subkeys(std::vector<std::string>& names) const;
    DWORD Create() const;
    DWORD Set(const RegistryValue& value) const;
    // ERROR_ACCESS_DENIED when there are keys below it, or it lies only where nothing is written.
    DWORD Remove() const;

  private:
    DWORD ChooseForWriting(const RegistryLayer*& chosen) const;

    std::vector<RegistryLayer> layers;
    RegistryWrites writes;
};

}  // namespace permora::host
