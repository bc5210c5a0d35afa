#include "framework/page_text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace permora {
namespace {

using Kind = PageParagraph::Kind;

constexpr std::string_view kBlanks = " \t\r\n";

struct Tag {
    std::string_view name;  // as written, without the slash
    std::string_view attributes;
    bool isEnd = false;
};

// The value of an attribute in quotation marks; empty when there is none.
std::string_view ValueOf(std::string_view attributes, std::string_view name) {
    for (std::size_t at = attributes.find(name); at != attributes.npos; at = attributes.find(name, at + 1)) {
        const std::size_t open = at + name.size();
        const bool isWhole = at > 0 && kBlanks.find(attributes[at - 1]) != kBlanks.npos;
        if (!isWhole || attributes.substr(open, 2) != "=\"") continue;
        const std::size_t end = attributes.find('"', open + 2);
        return attributes.substr(open + 2, end == attributes.npos ? end : end - open - 2);
    }
    return {};
}

std::string_view CharacterOf(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kNames{
        {{"quot", "\""},
         {"amp", "&"},
         {"lt", "<"},
         {"gt", ">"},
         {"nbsp", "\xc2\xa0"},
         {"ndash", "\xe2\x80\x93"}}};
    const auto found = std::ranges::find(kNames, name, &std::pair<std::string_view, std::string_view>::first);
    return found != kNames.end() ? found->second : std::string_view();
}

std::string Unescaped(std::string_view text) {
    constexpr std::size_t kLongestName = 8;
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t end = text[at] == '&' ? text.substr(at, kLongestName).find(';') : text.npos;
        const std::string_view character =
            end != text.npos ? CharacterOf(text.substr(at + 1, end - 1)) : std::string_view();
        if (character.empty())
            plain += text[at];
        else
            plain += character, at += end;
    }
    return plain;
}

std::optional<Kind> ParagraphOf(std::string_view element) {
    constexpr std::array<std::pair<std::string_view, Kind>, 9> kElements{{{"p", Kind::kText},
                                                                          {"div", Kind::kText},
                                                                          {"h1", Kind::kTitle},
                                                                          {"h2", Kind::kHeading},
                                                                          {"h3", Kind::kHeading},
                                                                          {"li", Kind::kItem},
                                                                          {"dt", Kind::kTerm},
                                                                          {"dd", Kind::kMeaning},
                                                                          {"tr", Kind::kRow}}};
    const auto found = std::ranges::find(kElements, element, &std::pair<std::string_view, Kind>::first);
    return found != kElements.end() ? std::optional(found->second) : std::nullopt;
}

class Reader {
  public:
    void Take(const Tag& tag);
    void Take(std::string_view text);
    std::vector<PageParagraph> Result() {
        End();
        return std::move(page);
    }

  private:
    void Begin(Kind kind) {
        End();
        current.kind = kind;
    }
    void End();
    void TakeStyle(const Tag& tag);

    std::vector<PageParagraph> page;
    PageParagraph current;
    PageSpan look;  // of the text that comes
    bool isInHead = false;
};

// A paragraph without text leaves its names to the next one.
void Reader::End() {
    auto& spans = current.spans;
    if (!spans.empty()) {
        std::string& last = spans.back().text;
        last.erase(last.find_last_not_of(' ') + 1);
        if (last.empty()) spans.pop_back();
    }
    if (spans.empty()) return;
    page.push_back(std::exchange(current, {}));
}

void Reader::TakeStyle(const Tag& tag) {
    const auto isNamed = [&](std::string_view name) { return tag.name == name; };
    if (isNamed("b") || isNamed("strong") || isNamed("th")) look.isBold = !tag.isEnd;
    if (isNamed("i") || isNamed("em")) look.isItalic = !tag.isEnd;
    if (isNamed("code") || isNamed("kbd")) look.isCode = !tag.isEnd;
    if (isNamed("a")) look.address = tag.isEnd ? std::string() : Unescaped(ValueOf(tag.attributes, "href"));
}

void Reader::Take(const Tag& tag) {
    if (tag.name == "head") isInHead = !tag.isEnd;
    if (const auto kind = ParagraphOf(tag.name)) Begin(tag.isEnd ? Kind::kText : *kind);
    TakeStyle(tag);
    if (tag.isEnd) return;
    const bool isCell = tag.name == "td" || tag.name == "th";
    if (isCell && !current.spans.empty()) current.spans.push_back({"\t"});
    if (const std::string_view name = ValueOf(tag.attributes, "id"); !name.empty())
        current.names.emplace_back(name);
}

// Blanks of any kind and number are one, and none where a paragraph or a cell begins.
void Reader::Take(std::string_view text) {
    if (isInHead) return;
    PageSpan span = look;
    const auto endsWithBlank = [&] {
        const std::string* before = !span.text.empty()       ? &span.text
                                    : !current.spans.empty() ? &current.spans.back().text
                                                             : nullptr;
        return before == nullptr || before->ends_with(' ') || before->ends_with('\t');
    };
    for (const char letter : Unescaped(text))
        if (kBlanks.find(letter) == kBlanks.npos)
            span.text += letter;
        else if (!endsWithBlank())
            span.text += ' ';
    if (!span.text.empty()) current.spans.push_back(std::move(span));
}

}  // namespace

std::vector<PageParagraph> ReadPage(std::string_view html) {
    Reader reader;
    while (!html.empty()) {
        const std::size_t open = html.find('<');
        reader.Take(html.substr(0, open));
        const std::size_t close = open != html.npos ? html.find('>', open) : html.npos;
        if (close == html.npos) break;
        std::string_view inner = html.substr(open + 1, close - open - 1);
        html.remove_prefix(close + 1);
        const bool isEnd = inner.starts_with('/');
        if (isEnd) inner.remove_prefix(1);
        const std::size_t length = std::min(inner.find_first_of(kBlanks), inner.size());
        reader.Take(Tag{inner.substr(0, length), inner.substr(length), isEnd});
    }
    return reader.Result();
}

}  // namespace permora
