// A page of help as paragraphs, for back ends that have no view of their own for it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace permora {

// A piece of a paragraph in one look. Line ends are none in it.
struct PageSpan {
    std::string text;
    bool isBold = false;
    bool isItalic = false;
    bool isCode = false;    // of a program, or a key
    std::string address{};  // where it leads to; empty: nowhere
};

struct PageParagraph {
    enum class Kind { kText, kTitle, kHeading, kItem, kTerm, kMeaning, kRow };
    Kind kind = Kind::kText;
    std::vector<PageSpan> spans;     // the cells of a row begin with a tab, but for the first
    std::vector<std::string> names;  // by which links lead here
};

// Reads HTML. Of elements that it does not know it takes the text, except of what stands in the page's head,
// and nothing is damaged enough to stop it: unclosed elements end with the page.
std::vector<PageParagraph> ReadPage(std::string_view html);

}  // namespace permora
