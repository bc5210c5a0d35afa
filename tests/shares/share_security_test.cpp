// Lists of shares without the sheet that edits them.
#include "shares/share_security.h"
#include "platform/system_message.h"

#include "platform/api/errors.h"
#include "security/message_boxes.h"
#include "tests/shares/share_table.h"

namespace permora::testing {
namespace {

class ShareSecurityTest : public WithShareTable {};

TEST_F(ShareSecurityTest, WhoOnlyLooksLeavesAShareAsItIs) {
    AddShare("docs", nullptr);
    AddShare("plans", "D:(A;;FA;;;BA)");
    ShareSecurity share;
    EXPECT_TRUE(LoadShareDacl(nullptr, "docs", share));
    EXPECT_FALSE(share.hasDescriptor);
    EXPECT_EQ(ListOf("docs"), "none");
    EXPECT_TRUE(LoadShareDacl(nullptr, "plans", share));
    EXPECT_EQ(share.entries.Entries().size(), 1U);
    ui.ExpectMessageBox(GetSystemMessageText(NERR_NetNameNotFound), kErrorCaption, MB_OK | MB_ICONERROR,
                        IDOK);
    EXPECT_FALSE(LoadShareDacl(nullptr, "none", share));
    EXPECT_EQ(share.entries.Entries().size(), 1U);
}

}  // namespace
}  // namespace permora::testing
