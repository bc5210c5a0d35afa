#include "platform/nt/sddl.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hex.h"

namespace permora::nt {
namespace {

constexpr std::uint32_t kEveryPart = 15;

TEST(Sddl, WritesWhatItReadsInTheSystemsForm) {
    // First column as read; second as written, where that differs.
    const struct {
        const char* read;
        const char* written = nullptr;
    } rows[] = {
        {""},
        {"O:BA"},
        {"G:S-1-5-21-1-2-3-513"},
        {"O:BAG:SYD:PAI(A;OICI;FA;;;BA)(D;ID;FW;;;S-1-5-21-1-2-3-1001)S:ARAI(AU;SAFA;FA;;;WD)"},
        {"S:PARAI(AU;FA;SD;;;WD)D:PARAI(A;;FA;;;SY)G:BUO:BU",
         "O:BUG:BUD:PARAI(A;;FA;;;SY)S:PARAI(AU;FA;SD;;;WD)"},
        {"D:AIARP", "D:PARAI"},
        {"O:S-1-0x010000000005D:", "O:S-1-0x010000000005D:"},
        {"O:S-1-5-32-544", "O:BA"},
        // The three states of a list.
        {"O:SYD:"},
        {"D:NO_ACCESS_CONTROLS:NO_ACCESS_CONTROL"},
        {"D:PNO_ACCESS_CONTROL"},
        {"D:S:"},
        // A system drive's root.
        {"O:S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464D:PAI(A;;LC;;;AU)"
         "(A;OICIIO;SDGXGWGR;;;AU)(A;;FA;;;SY)(A;OICIIO;GA;;;SY)(A;OICI;0x1200a9;;;BU)"},
        // Every type and flag.
        {"D:(A;OICINPIOIDCRSAFA;;;;WD)(D;;;;;WD)S:(AU;;;;;WD)(AL;;;;;WD)(ML;;NWNRNX;;;LW)(SP;;RC;;;S-1-17-1)"
         "(TL;;RC;;;S-1-19-512-8192)"},
        {"D:(OA;;CR;bf967aba-0de6-11d0-a285-00aa003049e2;00000000-0000-0000-0000-0000000000ff;PS)"
         "(OD;;CC;;BF967ABA-0de6-11d0-a285-00aa003049e2;PS)(OA;;RP;;;PS)S:(OU;SA;CR;;;WD)(OL;;;;;WD)",
         "D:(OA;;CR;bf967aba-0de6-11d0-a285-00aa003049e2;00000000-0000-0000-0000-0000000000ff;PS)"
         "(OD;;CC;;bf967aba-0de6-11d0-a285-00aa003049e2;PS)(OA;;RP;;;PS)S:(OU;SA;CR;;;WD)(OL;;;;;WD)"},
        // Rights: whole names, single letters in the order of their bits, numbers.
        {"D:(A;;FR;;;WD)(A;;FX;;;WD)(A;;GA;;;WD)(A;;CCDCLCSWRPWPDTLOCRSDRCWDWO;;;WD)(A;;0x100000;;;WD)"},
        {"D:(A;;WOWDRCSDCRLODTWPRPSWLCDCCC;;;WD)", "D:(A;;CCDCLCSWRPWPDTLOCRSDRCWDWO;;;WD)"},
        {"D:(A;;0x1F01FF;;;WD)(A;;2032127;;;WD)(A;;07600777;;;WD)(A;;0;;;WD)(A;;0x80000000;;;WD)",
         "D:(A;;FA;;;WD)(A;;FA;;;WD)(A;;FA;;;WD)(A;;;;;WD)(A;;GR;;;WD)"},
        {"D:(A;;FRFX;;;WD)(A;;KA;;;WD)(A;;KR;;;WD)(A;;FRFR;;;WD)(A;;4294967295;;;WD)",
         "D:(A;;0x1200a9;;;WD)(A;;CCDCLCSWRPWPSDRCWDWO;;;WD)(A;;CCSWRPRC;;;WD)(A;;FR;;;WD)(A;;0xffffffff;;;"
         "WD)"},
        {"S:(ML;;0x8;;;LW)(ML;;0x1;;;HI)", "S:(ML;;0x8;;;LW)(ML;;NW;;;HI)"},
        // Conditions and resource attributes, with all that could pass for the end of an entry or a part.
        {"D:P(XA;OICI;FX;;;WD;(@USER.ad://S:x == \"(D:)\"))(XD;;FA;;;AU;(Member_of {SID(BA), "
         "SID(SY)}))(A;;FA;;;BA)"
         "S:AI(XU;SA;CR;;;WD;(Exists "
         "x))(RA;CI;;;;WD;(\"O:a;\",TS,0x0,\")\",\"D:(\"))(FL;;FX;;;WD;(x))(FL;;FX;;;WD)"},
        {"D:(ZA;;CR;bf967aba-0de6-11d0-a285-00aa003049e2;;PS;(@RESOURCE.a Any_of {1, 2}))"},
        {"O:BAS:(RA;;;;;S-1-1-0; (\"Secrecy\",TU,0,3) )D:(XA;;FA;;;WD; ( a==SID(BA) ))G:SY",
         "O:BAG:SYD:(XA;;FA;;;WD;(a == SID(BA)))S:(RA;;;;;WD;(\"Secrecy\",TU,0x0,3))"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.read);
        const auto descriptor = FromSddl(row.read);
        ASSERT_TRUE(descriptor);
        const auto written = ToSddl(*descriptor, kEveryPart);
        ASSERT_TRUE(written);
        EXPECT_EQ(*written, row.written != nullptr ? row.written : row.read);
        EXPECT_EQ(FromSddl(*written), descriptor);

        std::vector<std::uint8_t> bytes;
        ASSERT_TRUE(descriptor->AppendTo(bytes));
        EXPECT_EQ(SecurityDescriptor::FromBytes(bytes), descriptor);
    }
}

TEST(Sddl, MeansTheBytesThatTheSystemStores) {
    const auto descriptor =
        FromSddl("O:SYG:BAD:P(OA;CI;CR;00299570-246d-11d0-a768-00aa006e0529;;AU)S:(AU;SA;SD;;;WD)");
    ASSERT_TRUE(descriptor);
    std::vector<std::uint8_t> bytes;
    ASSERT_TRUE(descriptor->AppendTo(bytes));
    EXPECT_EQ(bytes,
              Hex("01 00 1490 60000000 6c000000 14000000 30000000"
                  "02 00 1c00 0100 0000 02 40 1400 00000100 01 01 000000000001 00000000"
                  "04 00 3000 0100 0000 05 02 2800 00010000 01000000 70952900 6d24 d011 a768 00aa006e0529"
                  "01 01 000000000005 0b000000"
                  "01 01 000000000005 12000000"
                  "01 02 000000000005 20000000 20020000"));
}

TEST(Sddl, MeansTheBytesThatTheSystemStoresForConditions) {
    const auto descriptor =
        FromSddl("D:(XA;;CCDCLCSWRPWP;;;MP;(@RESOURCE.c))S:(RA;;;;;WD;(\"colour\",TS,0,\"blue\"))");
    ASSERT_TRUE(descriptor);
    std::vector<std::uint8_t> bytes;
    ASSERT_TRUE(descriptor->AppendTo(bytes));
    EXPECT_EQ(
        bytes,
        Hex("01 00 1480 00000000 00000000 14000000 5c000000"
            "02 00 4800 0100 0000 12 00 4000 00000000 01 01 000000000001 00000000"
            "14000000 0300 0000 00000000 01000000 22000000 63006f006c006f00750072000000 62006c00750065000000"
            "02 00 2800 0100 0000 09 00 2000 3f000000 01 01 000000000010 00210000"
            "61727478 fa 02000000 6300 00"));
}

TEST(Sddl, RefusesWhatBreaksTheGrammar) {
    // clang-format off
    const char* const kTexts[] = {
        "O", ":", "O:", "X:", "BA", "O:BA ", " O:BA", "O::", "O:BAO:BA", "O:ba", "o:BA", "O:ZZ", "O:S-1-5-32-544-",
        "O:S-1-5-32-544X:", "G:BAG:BA", "D:D:", "S:S:", "D:NO_ACCESS_CONTROLD:",
        "D:Q", "D:p", "D:(", "D:)", "D:()", "D:P()", "D:(A;;FA;;;BA", "D:(A;;FA;;;BA))", "D:((A;;FA;;;BA))",
        "D:A;;FA;;;BA", "D:(A;;FA;;;BA)P", "D:(A;;FA;;;BA) (A;;FA;;;BA)", "D:( A;;FA;;;BA)", "D:(A;;FA;;BA)",
        "D:(A;;FA;;;;BA)", "D:(A;;FA;;;)", "D:(;;FA;;;BA)", "D:(a;;FA;;;BA)", "D:NO_ACCESS_CONTROL(A;;FA;;;BA)",
        "D:NO_ACCESS",
        // Flags and rights.
        "D:(A;OIC;FA;;;BA)", "D:(A;XX;FA;;;BA)", "D:(A;oi;FA;;;BA)", "D:(A;;F;;;BA)", "D:(A;;FAF;;;BA)",
        "D:(A;;ZZ;;;BA)", "D:(A;;fa;;;BA)", "D:(A;;0x;;;BA)", "D:(A;;0x100000000;;;BA)", "D:(A;;4294967296;;;BA)",
        "D:(A;;08;;;BA)", "D:(A;;0x1G;;;BA)", "D:(A;;1FA;;;BA)", "D:(A;;-1;;;BA)", "D:(A;;NW;;;BA)",
        "S:(ML;;FA;;;LW)",
        // A GUID on a plain type, and GUIDs that are none.
        "D:(A;;FA;bf967aba-0de6-11d0-a285-00aa003049e2;;BA)", "D:(A;;FA;;bf967aba-0de6-11d0-a285-00aa003049e2;BA)",
        "D:(OA;;FA;bf967aba-0de6-11d0-a285-00aa003049e;;BA)", "D:(OA;;FA;bf967aba-0de6-11d0-a285-00aa003049e2a;;BA)",
        "D:(OA;;FA;bf967aba00de6-11d0-a285-00aa003049e2;;BA)", "D:(OA;;FA;bf967aba-0de6-11d0-a285-00aa003049g2;;BA)",
        "D:(OA;;FA;{f967aba-0de6-11d0-a285-00aa003049e};;BA)",
        // Conditions and resource attributes.
        "D:(XA;;FA;;;WD)", "D:(XA;;FA;;;WD;)", "D:(XA;;FA;;;WD;())", "D:(XA;;FA;;;WD;(a)", "D:(XA;;FA;;;WD;(a));",
        "D:(XA;;FA;;;WD;(a);)", "D:(A;;FA;;;WD;(a))", "D:(A;;FA;;;WD;)", "D:(XA;;FA;;;WD;(\"Secrecy\",TU,0,3))",
        "S:(RA;;;;;WD;(a))", "S:(RA;;;;;WD)", "D:(XA;;FA;;;WD;(a == \"))", "D:(ZA;;FA;x;;WD;(a))", "S:(ML;;NW;;;LW;(a))",
    };
    // clang-format on
    for (const char* text : kTexts)
        EXPECT_FALSE(FromSddl(text)) << text;
    EXPECT_FALSE(FromSddl(std::string_view("O:BA\0", 5)));
}

TEST(Sddl, RefusesAListThatNoDescriptorHolds) {
    std::string text = "D:";
    for (int i = 0; i < 3276; ++i)
        text += "(A;;FA;;;WD)";
    EXPECT_TRUE(FromSddl(text));
    text += "(A;;FA;;;WD)";
    EXPECT_FALSE(FromSddl(text));
    text.front() = 'S';
    EXPECT_FALSE(FromSddl(text));
}

TEST(Sddl, RefusesToDropWhatTextCannotHold) {
    Ace plain;
    plain.sid = Sid(1, {0});
    Ace behindTheSid = plain;
    behindTheSid.tail = {0, 0, 0, 0};
    Ace condition = plain;
    condition.type = 0x09;
    Ace shortNumber = condition;
    shortNumber.tail = Hex("61727478 f9 02000000 6100 01 0100000000000000 03 02 80 0000");
    Ace longPadding = condition;
    longPadding.tail = Hex("61727478 f9 02000000 6100 00 00000000");
    Ace malformed = condition;
    malformed.tail = Hex("61727478 89000000");
    Ace applicationsOwn = condition;
    applicationsOwn.tail = Hex("01020304");
    Ace deniedObject = plain;  // a condition without a word for its type
    deniedObject.type = 0x0C;
    deniedObject.object.emplace();
    deniedObject.tail = Hex("61727478 f9 02000000 6100 00");
    Ace attribute = plain;
    attribute.type = 0x12;
    attribute.tail = Hex("00000000");
    Ace opaque;
    opaque.type = 0x04;
    Ace unknownObjectFlag = plain;
    unknownObjectFlag.type = 0x05;
    unknownObjectFlag.object = {{}, {}, 4};

    SecurityDescriptor descriptor;
    descriptor.daclState = DaclState::kList;
    for (const Ace& ace : {behindTheSid, condition, shortNumber, longPadding, malformed, applicationsOwn,
                           deniedObject, attribute, opaque, unknownObjectFlag}) {
        descriptor.dacl.entries = {plain, ace};
        EXPECT_FALSE(ToSddl(descriptor, kEveryPart)) << int{ace.type};
        EXPECT_TRUE(ToSddl(descriptor, kEveryPart & ~4U)) << "a part that was not asked for does not matter";
    }
    descriptor.dacl.entries = {plain};
    EXPECT_TRUE(ToSddl(descriptor, kEveryPart));
    descriptor.saclBytes = Hex("02 00 0c00 0100 0000 00000000");
    EXPECT_FALSE(ToSddl(descriptor, kEveryPart));
}

TEST(Sddl, AccountsBelowTheMachineNeedTheMachine) {
    const SddlAccounts machine(Sid(5, {21, 7, 8, 9}));
    EXPECT_EQ(SidFromSddl("LA", machine), Sid(5, {21, 7, 8, 9, 500}));
    EXPECT_EQ(SidFromSddl("RS", machine), Sid(5, {21, 7, 8, 9, 553}));
    EXPECT_FALSE(SidFromSddl("LA"));
    EXPECT_EQ(SidFromSddl("SY"), Sid(5, {18}));
    EXPECT_EQ(SidFromSddl("S-1-5-18", machine), Sid(5, {18}));
    EXPECT_FALSE(SidFromSddl("", machine));
    EXPECT_FALSE(SidFromSddl("SYSTEM", machine));

    const auto descriptor = FromSddl("O:LAD:(A;;FA;;;DU)", machine);
    ASSERT_TRUE(descriptor);
    EXPECT_EQ(ToSddl(*descriptor, kEveryPart), "O:S-1-5-21-7-8-9-500D:(A;;FA;;;S-1-5-21-7-8-9-513)");
    EXPECT_FALSE(FromSddl("O:LA"));
}

}  // namespace
}  // namespace permora::nt
