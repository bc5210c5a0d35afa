#include "report/visible_text.h"

#include <gtest/gtest.h>

#include "platform/visible_text.h"

namespace permora {
namespace {

TEST(VisibleTextTest, NothingFromADiskBecomesMarkupOrStaysUnseen) {
    struct Case {
        const char* text;
        const char* visible;
        const char* html;
    };
    for (const auto& [text, visible, html] : {
             Case{"plain \xC3\xA4", "plain \xC3\xA4", "plain \xC3\xA4"},
             Case{"</script>", "</script>", "&lt;/script&gt;"},
             Case{"a\" onclick='x'&", "a\" onclick='x'&", "a&quot; onclick=&#39;x&#39;&amp;"},
             Case{"line\nfeed\x1b[2J", "line\\u{a}feed\\u{1b}[2J", "line\\u{a}feed\\u{1b}[2J"},
             Case{"\xE2\x80\xAE.exe \xE2\x80\xA8", "\\u{202e}.exe \\u{2028}", "\\u{202e}.exe \\u{2028}"},
             Case{"\xFFz\xC3", "\\xffz\\xc3", "\\xffz\\xc3"},
             Case{"\xEF\x80\x8A", "\\u{f00a}", "\\u{f00a}"},  // how the platform layer writes a line feed
         }) {
        EXPECT_EQ(VisibleText(text), visible);
        EXPECT_EQ(HtmlText(text), html);
    }
    EXPECT_EQ(ScriptText(R"(["<!--</script>&"])"), R"(["\u003c!--\u003c/script\u003e\u0026"])");
}

TEST(VisibleTextTest, CellsAreNoFormulas) {
    struct Case {
        const char* text;
        const char* cell;
    };
    for (const auto& [text, cell] : {
             Case{"plain text", "plain text"},
             Case{"", ""},
             Case{"a,b \"c\"", "\"a,b \"\"c\"\"\""},
             Case{"=1+2", "\"'=1+2\""},
             Case{"+1", "\"'+1\""},
             Case{"-1", "\"'-1\""},
             Case{"@SUM(A1)", "\"'@SUM(A1)\""},
             Case{"  =1", "\"'  =1\""},
             Case{"\xEF\xBC\x9D"
                  "1",
                  "\"'\xEF\xBC\x9D"
                  "1\""},
             Case{"\t=1", "\\u{9}=1"},  // the escaped character is no white space
             Case{"a=1", "a=1"},
         })
        EXPECT_EQ(CsvCell(text), cell) << text;
}

}  // namespace
}  // namespace permora
