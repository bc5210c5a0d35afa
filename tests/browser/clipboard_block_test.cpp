// The clipboard's formats: the program's own block to the byte, and the accepted lists of other programs.
#include "browser/clipboard_block.h"

#include <gmock/gmock.h>

#include <vector>

#include "browser/desktop_files.h"

namespace permora {
namespace {

using namespace std::string_literals;

std::vector<std::uint8_t> BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

// A header whose numbers are small.
std::string Header(char offset, char operation, char isWide) {
    std::string header(20, '\0');
    header[0] = offset;
    header[12] = operation;
    header[16] = isWide;
    return header;
}

std::string InUtf16(const std::u16string& text) {
    std::string bytes;
    for (const char16_t unit : text)
        bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    return bytes;
}

TEST(ClipboardBlock, IsWrittenAsLaidOut) {
    const struct {
        TransferKind kind;
        const char* folder;
        std::vector<std::string> names;
        std::string block;
    } cases[] = {
        {TransferKind::kCopy,
         R"(D:\Work)",
         {"a.txt", "b.txt"},
         Header(20, 1, 0) + "D:\\Work\\a.txt\0D:\\Work\\b.txt\0\0"s},
        {TransferKind::kMove, R"(C:\)", {"a.txt"}, Header(20, 0, 0) + "C:\\\\a.txt\0\0"s},
    };
    for (const auto& each : cases) {
        const std::vector<std::uint8_t> block = ClipboardBlockOf(each.kind, each.folder, each.names);
        EXPECT_EQ(block, BytesOf(each.block)) << each.folder;
        FileTransfer read;
        EXPECT_STREQ(ReadClipboardBlock(block, read), nullptr);
        EXPECT_EQ(read.kind, each.kind);
        EXPECT_EQ(read.list, each.block.substr(20));
    }
}

TEST(ClipboardBlock, FromOthersIsTakenWherePathsAndLayoutAreSound) {
    const std::string wide = InUtf16(u"C:\\Gr\u00FC\u00DFe\U0001F512\0\\\\server\\share\\x\0\0"s);
    const struct {
        std::string block;
        TransferKind kind;
        std::string list;
        std::u16string wideList;
    } cases[] = {
        {Header(24, 7, 1) + "pad." + wide + "rest", TransferKind::kCopy, "",
         u"C:\\Gr\u00FC\u00DFe\U0001F512\0\\\\server\\share\\x\0\0"s},
        {Header(21, 0, 0) + "?C:/a\0\0rest"s, TransferKind::kMove, "C:/a\0\0"s, u""},
    };
    for (const auto& each : cases) {
        FileTransfer read;
        EXPECT_STREQ(ReadClipboardBlock(BytesOf(each.block), read), nullptr);
        EXPECT_EQ(read.kind, each.kind);
        EXPECT_EQ(read.list, each.list);
        EXPECT_TRUE(std::equal(read.wideList.begin(), read.wideList.end(), each.wideList.begin(),
                               each.wideList.end()));
    }
}

TEST(ClipboardBlock, WithAnythingWrongIsRefused) {
    const auto narrow = [](const std::string& list) { return Header(20, 1, 0) + list; };
    const auto wide = [](const std::u16string& list) { return Header(20, 1, 1) + InUtf16(list); };
    const struct {
        const char* what;
        std::string block;
        const char* fault;
    } cases[] = {
        {"nothing", "", kDamagedFileList},
        {"half a header", Header(20, 1, 0).substr(0, 19), kDamagedFileList},
        {"no list", Header(20, 1, 0), kDamagedFileList},
        {"a list in the header", Header(16, 1, 0) + "C:\\a\0\0"s, kDamagedFileList},
        {"a list behind the end", Header(100, 1, 0) + "C:\\a\0\0"s, kDamagedFileList},
        {"a list far behind the end", "\xFF\xFF\xFF\xFF" + narrow("C:\\a\0\0"s).substr(4), kDamagedFileList},
        {"an odd place of wide text", Header(21, 1, 1) + "x" + InUtf16(u"C:\\a\0\0"s), kDamagedFileList},
        {"no files", narrow("\0\0"s), kDamagedFileList},
        {"no last NUL", narrow("C:\\a\0"s), kDamagedFileList},
        {"half a last NUL", wide(u"C:\\a\0\0"s).substr(0, 31), kDamagedFileList},
        {"no NUL at all", narrow("C:\\a"), kDamagedFileList},
        {"a relative path", narrow("a\0\0"s), kNoPathsOfFiles},
        {"a path of the drive's current folder", narrow("C:a\0\0"s), kNoPathsOfFiles},
        {"a path of the current drive", narrow("\\a\0\0"s), kNoPathsOfFiles},
        {"a drive", narrow("C:\\\0\0"s), kNoPathsOfFiles},
        {"a share", narrow("\\\\server\\share\0\0"s), kNoPathsOfFiles},
        {"a device", narrow("\\\\?\\C:\\a\0\0"s), kNoPathsOfFiles},
        {"a way up", narrow("C:\\a\\..\\b\0\0"s), kNoPathsOfFiles},
        {"a way up behind a slash", narrow("C:\\a/..\0\0"s), kNoPathsOfFiles},
        {"a name that ends in a blank", narrow("C:\\a \0\0"s), kNoPathsOfFiles},
        {"what a link leads to", narrow("C:\\link\\\0\0"s), kNoPathsOfFiles},
        {"everything", narrow("C:\\*\0\0"s), kNoPathsOfFiles},
        {"a stream", narrow("C:\\a:b\0\0"s), kNoPathsOfFiles},
        {"a line break", narrow("C:\\a\nb\0\0"s), kNoPathsOfFiles},
        {"bytes that are no text", narrow("C:\\\xFF\0\0"s), kNoPathsOfFiles},
        {"half a letter", wide(u"C:\\\xD83D\0\0"s), kNoPathsOfFiles},
        {"a bad path after a good one", narrow("C:\\a\0b\0\0"s), kNoPathsOfFiles},
        {"a path without end", narrow("C:\\" + std::string(40'000, 'a') + "\0\0"s), kNoPathsOfFiles},
    };
    for (const auto& each : cases) {
        FileTransfer read;
        read.list = "as before";
        EXPECT_STREQ(ReadClipboardBlock(BytesOf(each.block), read), each.fault) << each.what;
        EXPECT_EQ(read.list, "as before") << each.what;
    }
}

TEST(DesktopFiles, GoBothWaysInTheFormatsOfOtherPrograms) {
    const std::vector<std::string> names = {"a b.txt", "\u65E5#%.txt"};
    DesktopFileTexts texts;
    ASSERT_TRUE(MakeDesktopFileTexts(TransferKind::kMove, R"(C:\srv)", names, texts));
    EXPECT_EQ(texts.uriList, "file:///srv/a%20b.txt\r\nfile:///srv/%E6%97%A5%23%25.txt\r\n");
    EXPECT_EQ(texts.gnomeFiles, "cut\nfile:///srv/a%20b.txt\nfile:///srv/%E6%97%A5%23%25.txt");
    EXPECT_EQ(texts.kdeCut, "1");
    const std::string list = "C:\\srv\\a b.txt\0C:\\srv\\\u65E5#%.txt\0\0"s;
    FileTransfer read;
    EXPECT_STREQ(ReadGnomeFiles(BytesOf(texts.gnomeFiles), read), nullptr);
    EXPECT_EQ(read.list, list);
    EXPECT_EQ(read.kind, TransferKind::kMove);
    read = {};
    EXPECT_STREQ(ReadUriList(BytesOf("# files\n" + texts.uriList), {}, read), nullptr);
    EXPECT_EQ(read.list, list);
    EXPECT_EQ(read.kind, TransferKind::kCopy);
    EXPECT_STREQ(ReadUriList(BytesOf(texts.uriList), BytesOf(texts.kdeCut), read), nullptr);
    EXPECT_EQ(read.kind, TransferKind::kMove);
    EXPECT_FALSE(MakeDesktopFileTexts(TransferKind::kMove, "srv", names, texts));
}

TEST(DesktopFiles, FromElsewhereOrDamagedAreRefused) {
    FileTransfer read;
    for (const char* url : {"http://host/a", "file://elsewhere.example/a", "file:a", "file:///a/../b",
                            "file:///a/%2e%2E/b", "file:///a%2Fb", "file:///a%00b", "file:///a%4",
                            "file:///a%zz", "file:///a?b", "file:///a#b", "/a", "file:///", "file://"}) {
        EXPECT_STREQ(ReadUriList(BytesOf("file:///good\r\n"s + url), {}, read), kFilesElsewhere) << url;
    }
    for (const char* text : {"", "move\nfile:///a", "file:///a", "cut", "cut\n"})
        EXPECT_STREQ(ReadGnomeFiles(BytesOf(text), read), kDamagedFileList) << text;
    EXPECT_EQ(read.list, "");
}

}  // namespace
}  // namespace permora
