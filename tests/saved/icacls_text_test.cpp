// The text form of the system's tool icacls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/nt/sddl.h"
#include "saved/utf16.h"
#include "tests/saved/memory_texts.h"

namespace permora::test {
namespace {

std::string Wide(const std::string& text) {
    std::string bytes;
    EXPECT_TRUE(AppendUtf16(text, bytes));
    return bytes;
}

std::vector<std::uint8_t> Bytes(const std::string& sddl) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(nt::FromSddl(sddl)->AppendTo(bytes));
    return bytes;
}

TEST(IcaclsText, IsWrittenInPairsOfLines) {
    MemoryOutput output;
    const auto writer = SavedListWriter::Make(SavedForm::kIcacls, output);
    EXPECT_EQ(writer->Begin({SavedForm::kIcacls, "", DACL_SECURITY_INFORMATION}), 0U);
    EXPECT_EQ(writer->BeginTop({"C:\\", ""}), DWORD{ERROR_NOT_SUPPORTED});
    EXPECT_EQ(writer->BeginTop({"C:\\srv\\data", ""}), 0U);
    EXPECT_EQ(writer->Add("", SavedKind::kFolder, Bytes("D:PAI(A;OICI;FA;;;BA)")), 0U);
    EXPECT_EQ(writer->Add("a\\\xF0\x9F\x98\x80", SavedKind::kFile, Bytes("D:AI(A;ID;FA;;;BA)")), 0U);
    EXPECT_EQ(writer->Add("b", SavedKind::kFile, Bytes("D:NO_ACCESS_CONTROL")), 0U);
    EXPECT_EQ(writer->Add("c", SavedKind::kFile, Bytes("")), DWORD{ERROR_NOT_SUPPORTED});
    EXPECT_EQ(writer->AddGap("d", SavedKind::kUnread, 5), DWORD{ERROR_NOT_SUPPORTED});
    EXPECT_EQ(writer->End(), 0U);
    const std::string text = Wide(
        "data\r\nD:PAI(A;OICI;FA;;;BA)\r\n"
        "data\\a\\\xF0\x9F\x98\x80\r\nD:AI(A;ID;FA;;;BA)\r\n"
        "data\\b\r\nD:NO_ACCESS_CONTROL\r\n");
    EXPECT_EQ(output.text, text);

    for (const std::string& form : {text, "\xFF\xFE" + text}) {
        for (const std::size_t step : {1U, 4096U}) {
            const ReadText read = Read(form, step);
            EXPECT_EQ(read.fault.reason, "");
            EXPECT_EQ(read.head.form, SavedForm::kIcacls);
            EXPECT_EQ(read.head.parts, DWORD{DACL_SECURITY_INFORMATION});
            ASSERT_EQ(read.objects.size(), 3U);
            EXPECT_EQ(read.objects[0].path, "data");
            EXPECT_EQ(read.objects[1].path, "data\\a\\\xF0\x9F\x98\x80");
            EXPECT_EQ(read.objects[1].descriptor->bytes, Bytes("D:AI(A;ID;FA;;;BA)"));
            EXPECT_EQ(read.objects[2].descriptor->value.daclState, nt::DaclState::kNull);
        }
    }
}

TEST(IcaclsText, DamageIsRefusedByItsLine) {
    const std::string pair = "data\r\nD:P(A;;FA;;;BA)\r\n";
    const struct {
        std::string text;
        std::uint64_t line;
        const char* reason;
    } rows[] = {
        {Wide(pair + "..\\x\r\nD:P\r\n"), 3, "relative path"},
        {Wide(pair + "C:\\x\r\nD:P\r\n"), 3, "relative path"},
        {Wide(pair + "\\x\r\nD:P\r\n"), 3, "relative path"},
        {Wide(pair + "\r\nD:P\r\n"), 3, "relative path"},
        {Wide(pair + "x\r\n"), 3, "cut off"},
        {Wide(pair + "x\r\nD:P(A;"), 4, "cut off"},
        {Wide(pair + "x\r\nD:P(A;;FA;;;ZZ)\r\n"), 4, "not understood"},
        {Wide(pair + "x\r\nO:BAD:P\r\n"), 4, "not understood"},
        {Wide(pair + "x\r\nD:PS:(AU;SAFA;FA;;;WD)\r\n"), 4, "nothing else"},
        {Wide(pair) + std::string("x\0\0\xD8\r\0\n\0", 8), 3, "no UTF-16"},
    };
    for (const auto& row : rows) {
        const ReadText read = Read(row.text);
        EXPECT_EQ(read.fault.line, row.line) << row.reason;
        EXPECT_THAT(read.fault.reason, testing::HasSubstr(row.reason));
    }
}

}  // namespace
}  // namespace permora::test
