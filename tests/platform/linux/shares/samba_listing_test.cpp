#include "platform/linux/shares/samba_listing.h"

#include <gmock/gmock.h>

#include "platform/nt/sddl.h"

namespace permora::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Shown(const std::string& listing) {
    std::vector<std::string> shown;
    for (const Share& share : SharesOfSections(ParseSambaSections(listing))) {
        shown.push_back(share.name + '|' + std::to_string(share.type) + '|' + share.remark + '|' +
                        std::to_string(static_cast<int>(share.maxUses)) + '|' + share.path);
    }
    return shown;
}

TEST(SambaListingTest, SharesComeOutOfAnyText) {
    EXPECT_THAT(Shown("# Global parameters\n[global]\n\tpath = /g\n\n[homes]\n\tpath = /h\n[Printers]\n"
                      "[a]\n\tcomment = \"x\" = [y]\n\tmax connections = 5\n\tpath = /srv/a b\n"
                      "[off]\n\tavailable = No\n\tpath = /off\n"
                      "[p]\n\tprintable = Yes\n[adm$]\n\tadministrative share = Yes\n\tpath = /\n"
                      "[ipc$]\n\tpath = /tmp\n"),
                ElementsAre("a|0|\"x\" = [y]|5|/srv/a b", "p|1||-1|", "adm$|2147483648||-1|/",
                            "IPC$|2147483651|Remote IPC|-1|"))
        << "types";
    const struct {
        const char* listing;
        std::vector<std::string> shares;
    } cases[] = {
        {"", {}},
        {"[", {}},
        {"[]\npath = /a", {}},
        {"path = /a\n= =\n[a]\n=\nPATH=/b", {"a|0||-1|/b"}},
        {"[a]b \"c\"]\npath=/x", {"a]b \"c\"|0||-1|/x"}},
        {"[-x]\r\npath=/x\r\n", {}},
        {"[a\nb]\npath = /x\n[c]\n", {"c|0||-1|"}},
        {"[a\tb]\n[\xFF]\n[a\\b]\n", {}},
        {"[a]\n\tcomment = \xFF\xFE\n\tmax connections = 99999999999\n", {"a|0|\xFF\xFE|-1|"}},
        {"[a]\n\tmax connections = -1\n", {"a|0||-1|"}},
        // A remark cannot describe a share again that was already listed.
        {"[a]\n\tpath = /a\n[b]\n\tcomment = x\n[A]\n\tpath = /forged\n\tcomment = y\n",
         {"a|0||-1|/a", "b|0|x|-1|"}},
        // Names are one by their small letters, as to the server: these capitals are the same.
        {"[public]\n[publıc]\n[ſ]\n[s]\n[Ä]\n[ä]\n",
         {"public|0||-1|", "publıc|0||-1|", "ſ|0||-1|", "s|0||-1|", "Ä|0||-1|"}},
    };
    for (const auto& each : cases)
        EXPECT_EQ(Shown(each.listing), each.shares) << each.listing;
}

TEST(SambaListingTest, SectionsOfAFileAreFoundAsTheServerReadsThem) {
    const std::string file = "# [c]\n[global]\n  [ A b ] \n\tpath=/x\n;[d]\n[e\n";
    for (const char* name : {"a B", "GLOBAL", "e"})
        EXPECT_TRUE(HasSection(file, name)) << name;
    for (const char* name : {"c", "d", "path", ""})
        EXPECT_FALSE(HasSection(file, name)) << name;
}

TEST(SambaListingTest, GrantsOfUsersSharesAreReadAndWrittenWholeOrNotAtAll) {
    const struct {
        const char* sddl;
        const char* acl;  // null: it cannot be said
    } cases[] = {
        {"D:(D;;FA;;;BG)(A;;FA;;;BA)(A;;FR;;;WD)", "S-1-5-32-546:d,S-1-5-32-544:f,S-1-1-0:r"},
        {"O:BAD:(A;;0x1200a9;;;WD)", "S-1-1-0:r"},
        {"D:(A;OICINP;FA;;;WD)", "S-1-1-0:f"},
        {"D:(A;OICIIO;FA;;;WD)", nullptr},
        {"D:(A;;FW;;;WD)", nullptr},
        {"D:(D;;FR;;;WD)", nullptr},
        {"D:", nullptr},
        {"O:BA", nullptr},
        {"D:NO_ACCESS_CONTROL", nullptr},
        {"D:(A;;FA;;;WD)S:(AU;SA;FA;;;WD)", nullptr},
    };
    for (const auto& each : cases) {
        const auto acl = FormatUserShareAcl(nt::FromSddl(each.sddl).value());
        EXPECT_EQ(acl.value_or("none"), each.acl != nullptr ? each.acl : "none") << each.sddl;
    }
    const auto grants = ParseUserShareAcl("Everyone:R,a\\b: c:F,S-1-1-0:D,");
    ASSERT_TRUE(grants && grants->size() == 3);
    EXPECT_EQ((*grants)[1].account + (*grants)[1].access, "a\\b: cF");
    for (const char* text : {"Everyone", "Everyone:X", ":R", "a:R,,b:R", "a:RR"})
        EXPECT_FALSE(ParseUserShareAcl(text)) << text;
}

}  // namespace
}  // namespace permora::host
