// The dialogs of the program's resources.
#pragma once

#include <cstdint>
#include <vector>

#include "framework/resource_file.h"
#include "framework/resource_templates.h"
#include "resources/embedded_resources.h"

namespace permora::test {

// Their numbers.
inline std::vector<unsigned int> DialogTemplates() {
    std::vector<unsigned int> ids;
    for (const ResourceEntry& entry :
         ReadResourceFile(EmbeddedResources()).value_or(std::vector<ResourceEntry>())) {
        if (entry.type == static_cast<std::uint16_t>(ResourceType::kDialog)) ids.push_back(entry.id);
    }
    return ids;
}

}  // namespace permora::test
