// Which page of the help explains which window.
#pragma once

#include <span>
#include <string>

namespace permora {

// The page with which the help begins.
inline constexpr const char* kHelpContents = "index.html";

struct HelpTopic {
    unsigned int templateId;  // of a dialog, a page of a sheet, or the bar of a window
    const char* place;        // a page, or a place in it: "editor.html#owner"
};

// Every dialog template of the program is in it.
std::span<const HelpTopic> HelpTopics();
// kHelpContents for a window that has no topic.
std::string HelpPlaceOf(unsigned int templateId);

}  // namespace permora
