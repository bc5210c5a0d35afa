// Descriptors as text that means exactly the same bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace permora {

// The parts of a self-relative descriptor whose bits are set in `parts` (values of SECURITY_INFORMATION) as
// SDDL. Nothing when the text would not give the same bytes again, has a character that does not belong in a
// line, or is very long; and when the descriptor is not valid.
std::optional<std::string> ExactSddl(std::span<const std::uint8_t> descriptor, std::uint32_t parts);

}  // namespace permora
