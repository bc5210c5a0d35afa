#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/message_table.h"
#include "platform/resources.h"
#include "tests/support/project_folders.h"

namespace {

using permora::UniqueLibrary;
using permora::UniqueLocal;
using permora::host::ErrnoForMessage;
using permora::host::ErrorFromErrno;
using permora::host::Message;
using permora::host::NetworkMessages;
using permora::host::SystemMessages;

// The text that the program's own call gets, or nothing.
std::string TextOf(DWORD code, DWORD sources = FORMAT_MESSAGE_FROM_SYSTEM, HMODULE library = nullptr) {
    char* allocated = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | sources, library,
                       code, LANG_USER_DEFAULT, reinterpret_cast<LPSTR>(&allocated), 0, nullptr);
    const UniqueLocal<char> text(allocated);
    if (length == 0) return {};
    EXPECT_EQ(length, std::strlen(allocated));
    return allocated;
}

TEST(MessageTables, AreSortedAndHoldPlainSentences) {
    for (const auto table : {SystemMessages(), NetworkMessages()}) {
        DWORD last = 0;
        for (const Message& message : table) {
            SCOPED_TRACE(message.code);
            EXPECT_TRUE(&message == &table.front() || message.code > last);
            last = message.code;
            // The numbers of the network are looked up in its own library.
            EXPECT_EQ(message.code >= 2100 && message.code <= 2999, table.data() == NetworkMessages().data());
            const std::string text = message.text;
            ASSERT_GT(text.size(), 8U);
            EXPECT_TRUE(std::isupper(static_cast<unsigned char>(text.front())));
            EXPECT_TRUE(std::isalpha(static_cast<unsigned char>(text.back())));
            EXPECT_EQ(text.find('%'), std::string::npos) << "would be taken for an insert";
            EXPECT_EQ(ErrnoForMessage(message.code), 0) << "has two texts";
        }
    }
}

TEST(FormatMessage, HasATextForEveryErrorThatTheProgramKnows) {
    std::ifstream header(permora::test::InProject("src/platform/api/errors.h"));
    int found = 0;
    for (std::string line; std::getline(header, line);) {
        // inline constexpr DWORD <name> = <number>;
        std::istringstream words(line);
        std::string skipped;
        std::string name;
        DWORD code = 0;
        if (!(words >> skipped >> skipped >> skipped >> name >> skipped >> code)) continue;
        ++found;
        EXPECT_TRUE(TextOf(code).ends_with(".\r\n")) << name;
    }
    EXPECT_GT(found, 50);
}

TEST(FormatMessage, SearchesALibraryBeforeTheSystem) {
    constexpr DWORD kNetNotStarted = 2102;
    constexpr DWORD kBoth = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM;
    const UniqueLibrary network(LoadLibraryExA("netmsg.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_NE(TextOf(kNetNotStarted, kBoth, network.get()), "");
    EXPECT_NE(TextOf(ERROR_ACCESS_DENIED, kBoth, network.get()), "") << "falls back to the system";
    EXPECT_EQ(TextOf(ERROR_ACCESS_DENIED, FORMAT_MESSAGE_FROM_HMODULE, network.get()), "");
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
    EXPECT_EQ(TextOf(kNetNotStarted), "") << "the system alone does not know it";
    int noLibrary = 0;
    EXPECT_EQ(TextOf(kNetNotStarted, kBoth, reinterpret_cast<HMODULE>(&noLibrary)), "");
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

// Every error of the host has a text, and the text has the host's meaning.
TEST(HostErrors, KeepTheirMeaningInTheMessage) {
    for (int errorNumber = 1; errorNumber < 140; ++errorNumber) {
        const DWORD code = ErrorFromErrno(errorNumber);
        EXPECT_NE(code, ERROR_SUCCESS);
        EXPECT_NE(TextOf(code), "") << errorNumber;
    }
    for (const int errorNumber :
         {ENOENT, EACCES, ENOTDIR, EEXIST, ENOTEMPTY, ENAMETOOLONG, ELOOP, EMLINK, EXDEV, EROFS, ENOSPC,
          EDQUOT, EFBIG, EMFILE, EBUSY, EIO, ENOTCONN, ESTALE, EUCLEAN}) {
        EXPECT_EQ(ErrnoForMessage(ErrorFromErrno(errorNumber)), errorNumber);
    }
}

}  // namespace
