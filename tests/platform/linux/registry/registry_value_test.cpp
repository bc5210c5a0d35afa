#include "platform/linux/registry/registry_value.h"

#include <gtest/gtest.h>

#include <string>

namespace permora::host {
namespace {

std::vector<std::uint8_t> Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

RegistryValue ParseLine(const std::string& line) {
    const auto split = SplitValueLine(line);
    EXPECT_TRUE(split) << line;
    RegistryValue value{split->name, 0, {}};
    EXPECT_TRUE(ParseValueContent(split->content, value)) << line;
    return value;
}

TEST(RegistryValues, AreReadAndWrittenInTheEditorsForms) {
    using namespace std::string_literals;
    const struct {
        std::string line;
        std::string name;
        DWORD type;
        std::string data;
        std::string written;  // when other than `line`
    } cases[] = {
        {R"("Path"="C:\\Program \"Files\"")", "Path", REG_SZ, "C:\\Program \"Files\"\0"s, ""},
        {R"(@="Öffnen 文")", "", REG_SZ, "Öffnen 文\0"s, ""},
        {R"( "a=b\\" = "" )", "a=b\\", REG_SZ, "\0"s, R"("a=b\\"="")"},
        {R"("n"=dword:0000aBcd)", "n", REG_DWORD, "\xCD\xAB\0\0"s, R"("n"=dword:0000abcd)"},
        {R"("n"=dword:1)", "n", REG_DWORD, "\1\0\0\0"s, R"("n"=dword:00000001)"},
        {R"("b"=hex:00,f,FF)", "b", REG_BINARY, "\0\x0F\xFF"s, R"("b"=hex:00,0f,ff)"},
        {R"("b"=hex:)", "b", REG_BINARY, "", ""},
        {R"("b"=hex(0):01)", "b", 0, "\1", ""},
        {R"("b"=hex(80000001):01,  02)", "b", 0x80000001, "\1\2", R"("b"=hex(80000001):01,02)"},
        {R"("x"=hex(2):25,00,e4,00,00,00)", "x", REG_EXPAND_SZ, "%ä\0"s, ""},
        {R"("m"=hex(7):61,00,00,00,62,00,00,00,00,00)", "m", REG_MULTI_SZ, "a\0b\0\0"s, ""},
        // What the quoted form cannot hold.
        {R"("s"=hex(1):61,00,0a,00,00,00)", "s", REG_SZ, "a\n\0"s, ""},
        {R"("s"=hex(1):61,00)", "s", REG_SZ, "a\0"s, R"("s"="a")"},
    };
    for (const auto& [line, name, type, data, written] : cases) {
        const RegistryValue value = ParseLine(line);
        EXPECT_EQ(value.name, name) << line;
        EXPECT_EQ(value.type, type) << line;
        EXPECT_EQ(value.data, Bytes(data)) << line;
        EXPECT_EQ(FormatValue(value, "\n"), written.empty() ? line : written);
    }
}

TEST(RegistryValues, ThatAreDamagedAreNotGuessedAt) {
    for (const char* content : {"", "\"open", "\"a\" b", R"("a\n")", "\"tab\there\"", "text", "dword:",
                                "dword:123456789", "dword:x", "dword:-1", "hex", "hex(:01", "hex(g):01",
                                "hex:1g", "hex:123", "hex:01,\\", "hex(2):61", "hex(123456789):01"}) {
        RegistryValue value{"name", 77, {1}};
        EXPECT_FALSE(ParseValueContent(content, value)) << content;
        EXPECT_EQ(value.type, 77U);
        EXPECT_EQ(value.data.size(), 1U);
    }
    for (const char* line : {"", "; \"a\"=\"b\"", "a=b", "\"a\"", "\"a=b", "\"a\tb\"=\"c\"", "@", "[key]"})
        EXPECT_FALSE(SplitValueLine(line)) << line;
}

}  // namespace
}  // namespace permora::host
