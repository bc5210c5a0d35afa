// Our own form of saved lists: what is written is read back, and nothing else is read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "platform/nt/sddl.h"
#include "saved/own_form.h"
#include "saved/sha256.h"
#include "tests/saved/memory_texts.h"

namespace permora::test {
namespace {

constexpr const char* kHead = "permora-lists 1\nsaved 2026-11-26T08:02:11Z\nparts owner group dacl sacl\n";
constexpr const char* kTop = "top C:/srv/data\nvolume ext4 1a2b3c4d\n";
constexpr const char* kList = "list aa O:BAG:BAD:PAI(A;OICI;FA;;;BA)\n";

std::vector<std::uint8_t> DescriptorBytes(const std::string& sddl) {
    std::vector<std::uint8_t> bytes;
    const auto descriptor = nt::FromSddl(sddl);
    EXPECT_TRUE(descriptor && descriptor->AppendTo(bytes)) << sddl;
    return bytes;
}

// With an end that fits.
std::string Sealed(const std::string& body, int objects, const char* state = "complete") {
    Sha256 hash;
    hash.Add(body);
    return body + "end " + state + " " + std::to_string(objects) + " sha256 " + hash.Digest() + "\n";
}

struct Written {
    MemoryOutput output;
    std::unique_ptr<SavedListWriter> writer = SavedListWriter::Make(SavedForm::kPermora, output);

    Written() {
        EXPECT_EQ(writer->Begin({SavedForm::kPermora, "2026-11-26T08:02:11Z",
                                 OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION |
                                     DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION}),
                  0U);
        EXPECT_EQ(writer->BeginTop({"C:\\srv\\data", "ext4 1a2b3c4d"}), 0U);
    }
    const std::string& End() {
        EXPECT_EQ(writer->End(), 0U);
        return output.text;
    }
};

TEST(SavedLists, WhatIsWrittenIsReadBack) {
    const auto usual = DescriptorBytes("O:BAG:BAD:PAI(A;OICI;FA;;;BA)");
    // A defaulted owner, and a revision that the text form has no word for.
    auto defaulted = usual;
    defaulted[2] |= 1;
    const auto withLineFeed = DescriptorBytes("D:(XA;;FA;;;WD;(x == \"a\nb\"))");
    Written written;
    EXPECT_EQ(written.writer->Add("", SavedKind::kFolder, usual), 0U);
    EXPECT_EQ(written.writer->AddGap("a", SavedKind::kMounted, 0), 0U);
    EXPECT_EQ(written.writer->Add("b", SavedKind::kFolder, defaulted), 0U);
    EXPECT_EQ(written.writer->AddGap("b", SavedKind::kUnlisted, 5), 0U);
    EXPECT_EQ(written.writer->Add("b\\x\xEF\x80\x8A", SavedKind::kFile, usual), 0U);
    EXPECT_EQ(written.writer->AddGap("c", SavedKind::kUnread, 1338), 0U);
    EXPECT_EQ(written.writer->Add("d", SavedKind::kLink, withLineFeed), 0U);
    EXPECT_EQ(written.writer->Add("e\\..", SavedKind::kFile, usual), DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(written.writer->Add("e", SavedKind::kFile, std::vector<std::uint8_t>(40)),
              DWORD{ERROR_INVALID_SECURITY_DESCR});
    EXPECT_EQ(written.writer->BeginTop({"D:\\", "NTFS 1 a\\b "}), 0U);
    EXPECT_EQ(written.writer->Add("", SavedKind::kOther, usual), 0U);
    const std::string text = written.End();
    EXPECT_THAT(text, testing::HasSubstr("\nfolder "));
    EXPECT_THAT(text, testing::HasSubstr("\nlist64 "));
    EXPECT_THAT(text, testing::HasSubstr("\nend incomplete 8 sha256 "));

    for (const std::size_t step : {1U, 7U, 4096U}) {
        const ReadText read = Read(text, step);
        EXPECT_EQ(read.fault.reason, "");
        EXPECT_EQ(read.head.time, "2026-11-26T08:02:11Z");
        EXPECT_EQ(read.head.parts, 15U);
        ASSERT_EQ(read.tops.size(), 2U);
        EXPECT_EQ(read.tops[0].path + read.tops[0].volume, "C:\\srv\\dataext4 1a2b3c4d");
        EXPECT_EQ(read.tops[1].path + read.tops[1].volume, "D:\\NTFS 1 a\\b ");
        std::string seen;
        for (const SavedObject& object : read.objects)
            seen += object.path + ':' + std::to_string(static_cast<int>(object.kind)) + ' ' +
                    std::to_string(object.error) + ", ";
        EXPECT_EQ(seen, ":1 0, a:5 0, b:1 0, b:7 5, b\\x\xEF\x80\x8A:0 0, c:6 1338, d:2 0, :3 0, ");
        EXPECT_EQ(read.objects[0].descriptor->bytes, usual);
        EXPECT_EQ(read.objects[2].descriptor->bytes, defaulted);
        EXPECT_EQ(read.objects[4].descriptor, read.objects[0].descriptor);
        EXPECT_EQ(read.objects[6].descriptor->bytes, withLineFeed);
    }
}

TEST(SavedLists, ADescriptorOfTwoListsOf64KiBIsHeldToo) {
    nt::SecurityDescriptor large = *nt::FromSddl("O:BAG:BAD:P(A;OICI;FA;;;S-1-5-21-1-2-3-1000)");
    large.dacl.entries.resize(1800, large.dacl.entries[0]);
    std::vector<std::uint8_t> bytes;
    ASSERT_TRUE(large.AppendTo(bytes));
    ASSERT_GT(bytes.size(), 64'000U);
    Written written;
    EXPECT_EQ(written.writer->Add("", SavedKind::kFile, bytes), 0U);
    const ReadText read = Read(written.End());
    EXPECT_EQ(read.fault.reason, "");
    ASSERT_EQ(read.objects.size(), 1U);
    EXPECT_EQ(read.objects[0].descriptor->bytes, bytes);
}

// More distinct descriptors than either side remembers.
TEST(SavedLists, DescriptorsAreForgottenAndToldAgain) {
    const auto usual = DescriptorBytes("O:BAG:BAD:PAI(A;OICI;FA;;;BA)");
    nt::SecurityDescriptor large = *nt::FromSddl("O:BAG:BAD:P(A;OICI;FA;;;S-1-5-21-1-2-3-1000)");
    large.dacl.entries[0].tail.resize(64'000, 1);
    Written written;
    EXPECT_EQ(written.writer->Add("", SavedKind::kFolder, usual), 0U);
    for (std::uint32_t i = 0; i < 300; ++i) {
        large.dacl.entries[0].mask = 0x1200a9 + (i << 8);
        std::vector<std::uint8_t> bytes;
        ASSERT_TRUE(large.AppendTo(bytes));
        EXPECT_EQ(written.writer->Add(std::to_string(1000 + i), SavedKind::kFile, bytes), 0U);
    }
    EXPECT_EQ(written.writer->Add("x", SavedKind::kFile, usual), 0U);
    const std::string& text = written.End();
    EXPECT_THAT(text, testing::HasSubstr("\nforget\n"));
    const ReadText read = Read(text);
    EXPECT_EQ(read.fault.reason, "");
    ASSERT_EQ(read.objects.size(), 302U);
    EXPECT_EQ(read.objects.back().descriptor->bytes, usual);
}

TEST(SavedLists, ADamagedTextIsRefusedByItsLine) {
    const std::string start = std::string(kHead) + kTop + kList;
    const std::string deep = start + "folder aa .\nfolder aa a\nfile aa a/b\n";
    ASSERT_EQ(Read(Sealed(deep, 3)).fault.reason, "");
    const std::string whole = Sealed(deep, 3);
    const struct {
        std::string text;
        std::uint64_t line;
        const char* reason;
    } rows[] = {
        {"", 0, "no text of saved lists"},
        {"hello\n", 1, "no text of saved lists"},
        {"permora-lists 2\n", 1, "newer version"},
        {"permora-lists 1\n", 1, "cut off"},
        {"permora-lists 1\r\n", 1, "carriage returns"},
        {"permora-lists 1\nsaved yesterday\n", 2, "time"},
        {"permora-lists 1\nsaved 2026-11-26T08:02:11Z\nparts dacl owner\n", 3, "parts"},
        {Sealed(kHead, 0), 4, "no objects"},
        {Sealed(std::string(kHead) + kTop, 0), 6, "no objects"},
        {Sealed(std::string(kHead) + kList, 0), 4, "before the first top"},
        {Sealed(std::string(kHead) + "top data\nvolume x\n", 0), 4, "absolute"},
        {Sealed(start + "nonsense\n", 0), 7, "no such line"},
        {Sealed(start + "list aa O:BA\n", 0), 7, "came before"},
        {Sealed(start + "list xyz O:BA\n", 0), 7, "no name of a list"},
        {Sealed(start + "list ab O:\n", 0), 7, "not understood"},
        {Sealed(start + "list64 ab AQ==\n", 0), 7, "not understood"},
        {Sealed(start + "list64 ab A===\n", 0), 7, "not understood"},
        {Sealed("permora-lists 1\nsaved 2026-11-26T08:02:11Z\nparts dacl\n" + std::string(kTop) + kList, 0),
         6, "a part that was not saved"},
        {Sealed(start + "forget\nfolder aa .\n", 1), 8, "did not come before"},
        {Sealed(start + "folder ab .\n", 1), 7, "did not come before"},
        {Sealed(start + "file aa a\n", 1), 7, "begins with itself"},
        {Sealed(deep + "folder aa .\n", 4), 10, "itself once"},
        {Sealed(deep + "file aa a/b\n", 4), 10, "came before"},
        {Sealed(deep + "file aa a/a\n", 4), 10, "order"},
        {Sealed(deep + "file aa a/b/c\n", 4), 10, "folder of the object"},
        {Sealed(deep + "file aa c/d\n", 4), 10, "folder of the object"},
        {Sealed(deep + "file aa ../x\n", 4), 10, "no path below"},
        {Sealed(deep + "file aa C:/x\n", 4), 10, "no path below"},
        {Sealed(deep + "unlisted 5 a\n", 4, "incomplete"), 10, "right before"},
        {Sealed(deep + "unread 0 c\n", 4, "incomplete"), 10, "error code"},
        {Sealed(deep + "unread 5 c\n", 4), 11, "all could be read"},
        {Sealed(deep, 3, "whole"), 10, "all could be read"},
        {Sealed(deep, 4), 10, "number of objects"},
        {whole + "\n", 11, "after the end"},
        {whole + "x", 11, "cut off"},
        {deep, 9, "cut off"},
        {deep.substr(0, deep.size() - 1), 9, "cut off in the middle"},
        {std::string(kHead) + kTop + std::string(5 << 20, 'x'), 6, "too long"},
    };
    for (const auto& row : rows) {
        const ReadText read = Read(row.text);
        EXPECT_EQ(read.fault.line, row.line) << row.reason << ", " << read.fault.reason;
        EXPECT_THAT(read.fault.reason, testing::HasSubstr(row.reason)) << row.text.substr(0, 300);
    }
    // No change of a single character goes unnoticed, and neither does an end at any place.
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string changed = whole;
        changed[i] = changed[i] == '1' ? '2' : '1';
        EXPECT_NE(Read(changed).fault.reason, "") << i;
        EXPECT_NE(Read(whole.substr(0, i)).fault.reason, "") << i;
    }
}

// Very many objects, made while they are read.
class Endless : public SavedInput {
  public:
    DWORD Read(std::span<char> block, std::size_t& count) override {
        if (pending.empty()) Produce();
        count = std::min(block.size(), pending.size());
        std::copy_n(pending.begin(), count, block.begin());
        pending.erase(0, count);
        return ERROR_SUCCESS;
    }

  private:
    void Produce() {
        if (next > kObjects) return;
        if (next == 0) pending = std::string(kHead) + kTop + kList + "folder aa .\n";
        for (int i = 0; i < 1000 && next < kObjects; ++i, ++next)
            pending += "file aa " + std::to_string(10'000'000 + next) + '\n';
        hash.Add(pending);
        if (next == kObjects) {
            pending += "end complete " + std::to_string(kObjects + 1) + " sha256 " + hash.Digest() + '\n';
            ++next;
        }
    }

    static constexpr int kObjects = 200'000;
    std::string pending;
    Sha256 hash;
    int next = 0;
};

// Its memory is that of the lines, not of the objects.
TEST(SavedLists, ManyObjectsStream) {
    Endless input;
    SavedFault fault;
    const auto reader = SavedListReader::Open(input, fault);
    ASSERT_TRUE(reader) << fault.reason;
    SavedObject object;
    std::size_t count = 0;
    while (reader->Next(object, fault))
        ++count;
    EXPECT_EQ(fault.reason, "");
    EXPECT_EQ(count, 200'001U);
}

}  // namespace
}  // namespace permora::test
