// GUIDs as text: "bf967aba-0de6-11d0-a285-00aa003049e2". Source: [MS-DTYP] 2.3.4 GUID.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace permora::nt {

using Guid = std::array<std::uint8_t, 16>;  // as stored

void AppendGuid(const Guid& guid, std::string& text);

// The GUID that the whole of `text` shows, with digits of either case.
std::optional<Guid> GuidFromText(std::string_view text);

}  // namespace permora::nt
