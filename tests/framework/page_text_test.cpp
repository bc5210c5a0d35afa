// Pages of help as paragraphs.
#include "framework/page_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// In one line: the kind's number, the names, and the spans with a letter for each look.
std::vector<std::string> Lines(std::string_view html) {
    std::vector<std::string> lines;
    for (const PageParagraph& each : ReadPage(html)) {
        std::string line = std::to_string(static_cast<int>(each.kind));
        for (const std::string& name : each.names)
            line += " #" + name;
        for (const PageSpan& span : each.spans)
            line += std::string(" ") + (span.isBold ? "b" : "") + (span.isItalic ? "i" : "") +
                    (span.isCode ? "c" : "") + '[' + span.text + ']' + span.address;
        lines.push_back(line);
    }
    return lines;
}

TEST(PageText, ParagraphsHaveTheirKindNamesAndLooks) {
    EXPECT_THAT(
        Lines("<html><head><title>No</title></head><body>\n<h1>A  title</h1>\n"
              "<h2 id=\"list\">The\nlist</h2>\n<p>See <a href=\"b.html#x\">b</a>, <kbd>Alt+P</kbd>.</p>"
              "<ul><li>one</li><li><b>t</b><em>wo</em></li></ul>"
              "<dl><dt>Term</dt><dd>&quot;x&quot; &amp; &lt;y&gt; &ndash;</dd></dl>"),
        ElementsAre("1 [A title]", "2 #list [The list]", "0 [See ] [b]b.html#x [, ] c[Alt+P] [.]", "3 [one]",
                    "3 b[t] i[wo]", "4 [Term]", "5 [\"x\" & <y> \xe2\x80\x93]"));
    EXPECT_THAT(Lines("<table>\n<tr><th>Column</th><th>tells</th></tr>\n<tr> <td>a</td> <td>b </td> </tr>"),
                ElementsAre("6 b[Column] [\t] b[tells]", "6 [a] [ ] [\t] [b]"));
    EXPECT_THAT(Lines("<div id=\"top\"></div><p>text"), ElementsAre("0 #top [text]"));
}

TEST(PageText, DamagedPagesAreReadAsFarAsTheyGo) {
    EXPECT_THAT(Lines(""), IsEmpty());
    EXPECT_THAT(Lines("<"), IsEmpty());
    EXPECT_THAT(Lines("a<b"), ElementsAre("0 [a]"));
    EXPECT_THAT(Lines("</p></a>a<>b</>c<a href=\"d>e"), ElementsAre("0 [a] [b] [c] [e]d"));
    EXPECT_THAT(Lines("&quot &; &nothing; &amp"), ElementsAre("0 [&quot &; &nothing; &amp]"));
    EXPECT_THAT(Lines("<a data-href=\"x\" href=\"y\">z"), ElementsAre("0 [z]y"));
    EXPECT_EQ(ReadPage(std::string(100'000, '<')).size(), 0U);
}

}  // namespace
}  // namespace permora
