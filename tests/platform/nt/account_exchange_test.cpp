#include "platform/nt/account_exchange.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/nt/sddl.h"

namespace permora::nt {
namespace {

constexpr std::uint32_t kAllParts = 15;
constexpr const char* kAnna = "S-1-5-21-1-2-3-1001";
constexpr const char* kBert = "S-1-5-21-1-2-3-1002";
constexpr const char* kElsewhere = "S-1-5-21-7-8-9-10-5001";  // longer than those that it takes the place of

Sid Account(const char* text) {
    return Sid::FromText(text).value_or(Sid());
}

SecurityDescriptor Descriptor(const std::string& sddl) {
    const auto descriptor = FromSddl(sddl);
    EXPECT_TRUE(descriptor) << sddl;
    return descriptor.value_or(SecurityDescriptor());
}

// Anna is Bert from now on, and Bert is someone elsewhere.
AccountExchange Chain() {
    AccountExchange exchange;
    EXPECT_TRUE(exchange.Add(Account(kAnna), Account(kBert)));
    EXPECT_TRUE(exchange.Add(Account(kBert), Account(kElsewhere)));
    return exchange;
}

std::string With(std::string text, const std::string& first, const std::string& second) {
    for (std::size_t at = text.find('%'); at != text.npos; at = text.find('%'))
        text.replace(at, 2, text[at + 1] == '1' ? first : second);
    return text;
}

TEST(AccountExchange, ReachesEveryPlaceOfAnAccountOnce) {
    const char* const rows[] = {
        "O:%1G:%2",
        "O:%2D:P(A;OICI;FA;;;%1)(D;;FW;;;%2)(A;ID;FR;;;WD)",
        "D:(OA;;CR;ab721a53-1e2f-11d0-9819-00aa0040529b;;%1)",
        "S:(AU;SAFA;FA;;;%1)",
        R"(D:(XA;;FA;;;WD;(Member_of {SID(%1), SID(%2), SID(BA)})))",
        R"(D:(XA;;FA;;;%2;((@USER.Title == "PM" && Member_of SID(%1)) || @USER.Level >= 5)))",
    };
    for (const char* row : rows) {
        SCOPED_TRACE(row);
        SecurityDescriptor descriptor = Descriptor(With(row, kAnna, kBert));
        EXPECT_EQ(Chain().Apply(descriptor), ExchangeResult::kChanged);
        EXPECT_EQ(ToSddl(descriptor, kAllParts), ToSddl(Descriptor(With(row, kBert, kElsewhere)), kAllParts));
    }
}

TEST(AccountExchange, LeavesWhatNamesNobodyOfThemByteForByte) {
    AccountExchange exchange = Chain();
    SecurityDescriptor descriptor = Descriptor("O:BAG:SYD:P(A;OICI;FA;;;WD)S:(AU;SAFA;FA;;;WD)");
    descriptor.saclBytes.resize(descriptor.saclBytes.size() + 8);  // unused space behind the entries
    descriptor.saclBytes[2] = static_cast<std::uint8_t>(descriptor.saclBytes.size());
    const SecurityDescriptor before = descriptor;
    EXPECT_EQ(exchange.Apply(descriptor), ExchangeResult::kUnchanged);
    EXPECT_EQ(descriptor, before);
    EXPECT_EQ(exchange.Unused().size(), 2U);
    SecurityDescriptor annas = Descriptor(std::string("O:") + kAnna);
    EXPECT_EQ(exchange.Apply(annas), ExchangeResult::kChanged);
    EXPECT_EQ(exchange.Unused(), std::vector{Account(kBert)});
}

TEST(AccountExchange, NothingIsChangedWhereAnAccountCannotBeReached) {
    const Sid bert = Account(kBert);
    const std::vector<std::uint8_t> bertsBytes(bert.Bytes().begin(), bert.Bytes().end());
    const std::string attribute = std::string(R"(S:(RA;;;;;WD;("Owners",TD,0x0,)") + kAnna + "))";
    SecurityDescriptor unknown = Descriptor(std::string("O:") + kAnna + "D:(A;;FA;;;WD)");
    Ace opaque;
    opaque.type = 4;
    opaque.tail = bertsBytes;
    unknown.dacl.entries.push_back(opaque);
    std::string condition("D:(XA;;FA;;;WD;(Member_of {SID(");
    condition += kBert;
    condition += ")}))";
    SecurityDescriptor damaged = Descriptor(condition);
    damaged.owner = Account(kAnna);
    damaged.dacl.entries.front().tail[5] = 0x7F;  // more bytes than there are
    SecurityDescriptor cut = unknown;
    cut.dacl.entries.clear();
    cut.saclBytes = bertsBytes;
    for (SecurityDescriptor descriptor : {Descriptor(attribute), unknown, damaged, cut}) {
        const SecurityDescriptor before = descriptor;
        EXPECT_EQ(Chain().Apply(descriptor), ExchangeResult::kHidden);
        EXPECT_EQ(descriptor, before);
    }
}

TEST(AccountExchange, AnAccountHasOneSuccessor) {
    AccountExchange exchange = Chain();
    EXPECT_TRUE(exchange.Add(Account(kAnna), Account(kBert)));
    EXPECT_FALSE(exchange.Add(Account(kAnna), Account(kElsewhere)));
    SecurityDescriptor descriptor = Descriptor(std::string("O:") + kAnna);
    exchange.Apply(descriptor);
    EXPECT_EQ(descriptor.owner, Account(kBert));
}

}  // namespace
}  // namespace permora::nt
