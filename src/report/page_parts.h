// The parts of a report's page that are the same in every report: src/report/page.
#pragma once

#include <string_view>

namespace permora {

std::string_view PageStyle();
std::string_view PageScript();
// What the script brings to life.
std::string_view PageExplorer();

}  // namespace permora
