#include "platform/nt/resource_attribute.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hex.h"

namespace permora::nt {
namespace {

std::optional<std::string> AttributeText(const std::vector<std::uint8_t>& stored) {
    return ResourceAttributeToText(stored, SddlWords::kAbbreviations);
}

TEST(ResourceAttribute, MeansTheBytesThatTheSystemStores) {
    const struct {
        const char* text;
        const char* stored;
    } rows[] = {
        {R"(("colour",TS,0x0,"blue","red"))",
         "18000000 0300 0000 00000000 02000000 26000000 30000000 63006f006c006f00750072000000"
         "62006c00750065000000 7200650064000000"},
        {R"(("colOIr",TU,0xe,29925))",
         "14000000 0200 0000 0e000000 01000000 22000000 63006f006c004f00490072000000 e574000000000000 0000"},
        {R"(("a",TU,0x0,18446744073709551615))",
         "14000000 0200 0000 00000000 01000000 18000000 61000000 ffffffffffffffff"},
        {R"(("a",TI,0x10001,-1,9223372036854775807,-9223372036854775808))",
         "1c000000 0100 0000 01000100 03000000 20000000 28000000 30000000 61000000"
         "ffffffffffffffff ffffffffffffff7f 0000000000000080"},
        {R"(("a",TB,0x3f,1,0))",
         "18000000 0600 0000 3f000000 02000000 1c000000 24000000 61000000 0100000000000000 0000000000000000"},
        {R"(("a%0022",TD,0x0,WD,S-1-5-21-1))",
         "18000000 0500 0000 00000000 02000000 1e000000 2e000000 610022000000 0c000000 0101000000000001 "
         "00000000"
         "10000000 0102000000000005 15000000 01000000 0000"},
        {R"(("a",TX,0x0,#0077,#))",
         "18000000 1000 0000 00000000 02000000 1c000000 22000000 61000000 02000000 0077 00000000 0000"},
        {R"(("a",TS,0x0))", "10000000 0300 0000 00000000 00000000 61000000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ResourceAttributeFromText(row.text), Hex(row.stored));
        EXPECT_EQ(AttributeText(Hex(row.stored)), row.text);
    }
}

TEST(ResourceAttribute, WritesWhatItReadsInTheSystemsForm) {
    const struct {
        const char* read;
        const char* written;
    } rows[] = {
        {R"( ( "Project" , TS , 0 , "Windows" , "SQL" ) )", R"(("Project",TS,0x0,"Windows","SQL"))"},
        {R"(("a",TU,0,0x10,017,0,+3))", R"(("a",TU,0x0,16,15,0,3))"},
        {R"(("a",TI,010,-0x10))", R"(("a",TI,0x8,-16))"},
        {R"(("a",TX,0,0077,#1,aB))", R"(("a",TX,0x0,#0077,#01,#ab))"},
        {R"(("a;b",TD,0,S-1-5-18 ))", R"(("a;b",TD,0x0,SY))"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.read);
        const auto stored = ResourceAttributeFromText(row.read);
        ASSERT_TRUE(stored);
        EXPECT_EQ(AttributeText(*stored), row.written);
        EXPECT_EQ(ResourceAttributeFromText(row.written), stored);
    }
}

TEST(ResourceAttribute, RefusesWhatBreaksTheGrammar) {
    const char* const kTexts[] = {
        "",
        "()",
        R"(("a"))",
        R"(("a",TS))",
        R"(("",TS,0x0))",
        R"((a,TS,0x0))",
        R"(("a,TS,0x0))",
        R"(("a b",TS,0x0))",
        R"(("a",TT,0x0))",
        R"(("a",ts,0x0))",
        R"(("a",TS,x))",
        R"(("a",TS,-1))",
        R"(("a",TS,0x100))",
        R"(("a",TS,0x40))",
        R"(("a",TS,0x100000000))",
        R"(("a",TS,0x0,))",
        R"(("a",TS,0x0,b))",
        R"(("a",TS,0x0,"b)",
        R"(("a",TS,0x0,"b")",
        R"(("a",TS,0x0,"b"))x)",
        R"(("a",TS,0x0,"b" "c"))",
        R"(("a",TI,0x0,"1"))",
        R"(("a",TI,0x0,9223372036854775808))",
        R"(("a",TI,0x0,0xffffffffffffffff))",
        R"(("a",TU,0x0,-1))",
        R"(("a",TU,0x0,18446744073709551616))",
        R"(("a",TB,0x0,2))",
        R"(("a",TB,0x0,-1))",
        R"(("a",TX,0x0,007))",
        R"(("a",TX,0x0,0g))",
        R"(("a",TD,0x0,SID(WD)))",
        R"(("a",TD,0x0,LA))",
    };
    for (const char* text : kTexts)
        EXPECT_FALSE(ResourceAttributeFromText(text)) << text;
}

TEST(ResourceAttribute, RefusesMalformedBytes) {
    const struct {
        const char* what;
        const char* stored;
    } rows[] = {
        {"no header", "14000000 0200 0000 00000000"},
        {"a type that is none", "14000000 0400 0000 00000000 01000000 18000000 61000000 0000000000000000"},
        {"a reserved field that is used",
         "14000000 0200 0100 00000000 01000000 18000000 61000000 0000000000000000"},
        {"flags outside the grammar",
         "14000000 0200 0000 80000000 01000000 18000000 61000000 0000000000000000"},
        {"more values than there is room for", "14000000 0200 0000 00000000 ffffff7f 18000000 61000000"},
        {"a name outside", "ffffffff 0200 0000 00000000 00000000 61000000"},
        {"a name in the header", "04000000 0200 0000 00000000 00000000 61000000"},
        {"a name without end", "10000000 0200 0000 00000000 00000000 61006200"},
        {"no name", "10000000 0200 0000 00000000 00000000 00000000"},
        {"a value outside", "14000000 0200 0000 00000000 01000000 ffffffff 61000000 0000000000000000"},
        {"a value in another place",
         "14000000 0200 0000 00000000 01000000 1c000000 61000000 00000000 0000000000000000"},
        {"one value used twice",
         "18000000 0200 0000 00000000 02000000 1c000000 1c000000 61000000 0000000000000000"},
        {"a short value", "14000000 0200 0000 00000000 01000000 18000000 61000000 00000000"},
        {"a boolean of 2", "14000000 0600 0000 00000000 01000000 18000000 61000000 0200000000000000"},
        {"a string without end", "14000000 0300 0000 00000000 01000000 18000000 61000000 62006300"},
        {"octets that end too late",
         "14000000 1000 0000 00000000 01000000 18000000 61000000 05000000 00000000"},
        {"a SID with bytes behind it",
         "14000000 0500 0000 00000000 01000000 18000000 61000000 10000000 0101000000000001 00000000 "
         "00000000"},
        {"more behind the last value",
         "14000000 0200 0000 00000000 01000000 18000000 61000000 0000000000000000 01000000"},
    };
    for (const auto& row : rows)
        EXPECT_FALSE(AttributeText(Hex(row.stored))) << row.what;
}

}  // namespace
}  // namespace permora::nt
