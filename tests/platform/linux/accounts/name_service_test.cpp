// Answers and failures of the name service are passed on. The linker's wraps invent one user.
#include "platform/linux/accounts/name_service.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace {

constexpr uid_t kMadeUpUser = 4'000'000'001;

// The name service's answer for the invented user.
struct Answer {
    std::size_t buffer;  // the smallest that it accepts
    const char* name;    // null: none, with `result`
    int result;
} answer;

}  // namespace

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming)
extern "C" {

int __real_getpwuid_r(uid_t user, passwd* record, char* buffer, std::size_t size, passwd** found);

int __wrap_getpwuid_r(uid_t user, passwd* record, char* buffer, std::size_t size, passwd** found) {
    if (user != kMadeUpUser) return __real_getpwuid_r(user, record, buffer, size, found);
    *found = nullptr;
    if (size < answer.buffer) return ERANGE;
    if (answer.name == nullptr) return answer.result;
    std::memcpy(buffer, answer.name, std::strlen(answer.name) + 1);
    record->pw_name = buffer;
    *found = record;
    return 0;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

namespace permora::host {
namespace {

TEST(NameServiceTest, TellsMissingAccountsFromFailures) {
    const struct {
        Answer answer;
        DWORD error;
    } cases[] = {
        {{0, "alice", 0}, ERROR_SUCCESS},
        {{std::size_t{1} << 20, "alice", 0}, ERROR_SUCCESS},
        {{0, "m\xC3\xBCller x", 0}, ERROR_SUCCESS},
        {{0, nullptr, 0}, ERROR_NONE_MAPPED},
        {{0, nullptr, ENOENT}, ERROR_NONE_MAPPED},
        {{0, nullptr, EIO}, ERROR_IO_DEVICE},
        {{0, nullptr, EMFILE}, ERROR_TOO_MANY_OPEN_FILES},
        {{std::size_t{1} << 40, "alice", 0}, ERROR_INSUFFICIENT_BUFFER},
        // Names that would read as something else.
        {{0, "BUILTIN\\Administrators", 0}, ERROR_NONE_MAPPED},
        {{0, "a\xFF", 0}, ERROR_NONE_MAPPED},
        {{0, "a\xED\xA0\x80", 0}, ERROR_NONE_MAPPED},
        {{0, "root\nroot", 0}, ERROR_NONE_MAPPED},
        {{0, "", 0}, ERROR_NONE_MAPPED},
    };
    for (const auto& entry : cases) {
        answer = entry.answer;
        std::string name = "as before";
        EXPECT_EQ(FindHostName(AccountKind::kUser, kMadeUpUser, name), entry.error);
        EXPECT_EQ(name, entry.error == ERROR_SUCCESS ? entry.answer.name : "as before");
    }
}

// The name service finds nobody while it cannot open its files.
TEST(NameServiceTest, NobodyIsGoneWhileDescriptorsAreShort) {
    constexpr uid_t kInFilesAlone = 1;
    std::string name;
    ASSERT_EQ(FindHostName(AccountKind::kUser, kInFilesAlone, name), ERROR_SUCCESS);
    ASSERT_EQ(FindHostName(AccountKind::kUser, 4'000'000, name), ERROR_NONE_MAPPED);
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit none = {0, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const DWORD existing = FindHostName(AccountKind::kUser, kInFilesAlone, name);
    const DWORD missing = FindHostName(AccountKind::kUser, 4'000'000, name);
    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_NE(existing, ERROR_NONE_MAPPED);  // a recent listing may have it
    EXPECT_EQ(missing, ERROR_TOO_MANY_OPEN_FILES);
}

}  // namespace
}  // namespace permora::host
