// What a server of mounted shares answers through rpcclient, and files with passwords: each text is read or
// refused, and what was read keeps its promises.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "platform/linux/accounts/server_logon.h"
#include "platform/linux/accounts/server_output.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    using namespace permora::host;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::array<nt::Sid, 2> asked = {nt::Sid(5, {21, 1, 2, 3, 1000}), nt::Sid(5, {21, 1, 2, 3, 1001})};

    std::string_view rest = text;
    if (const auto server = TakeIdentity(rest)) {
        Require(rest.size() < text.size() && text.ends_with(rest), "what is left is no end of the text");
        Require(CanBeAskedFor(server->name), "a server's name would become a part of a command");
        std::string_view further = rest;
        (void)TakeRole(further, *server);
        Require(rest.ends_with(further), "a role is no part of the text");
        if (const auto answers = SplitAnswers(rest, *server, 2))
            Require(answers->size() == asked.size(), "not so many answers as questions");
    }
    if (const auto names = ParseServerNames(text, asked))
        Require(names->size() == asked.size(), "not so many names as SIDs");
    (void)ParseServerSid(text, "anna");
    (void)ParsePrimaryGroup(text);
    (void)ParseGroupIds(text);

    if (const auto credentials = ParseCredentials(text)) {
        const auto isOneLine = [](const std::string& value) { return value.find('\n') == value.npos; };
        Require(isOneLine(credentials->user) && isOneLine(credentials->domain) &&
                    isOneLine(credentials->password),
                "a value would become a line of its own");
    }
    return 0;
}
