#include "platform/linux/registry/registry_document.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>

namespace permora::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lookup = RegistryDocument::Lookup;

constexpr const char* kForeign = R"(Windows Registry Editor Version 5.00

; A person wrote this.
[HKEY_CURRENT_USER\Software\Maker]
"Text"="one"
"Broken"=hex:01,zz,\
  03
"Cut"=hex:01,\
"Next"="unharmed"
"Text"="two"
this is no line of ours
"Gone"=-

[-HKEY_CURRENT_USER\Software\Maker\Old]
"Text"="not here"

[HKEY_CURRENT_USER\software\MAKER\Deep\Er]
@="below"
)";

RegistryDocument Parsed(const std::string& text) {
    auto document = RegistryDocument::Parse(text);
    EXPECT_TRUE(document) << text;
    return document.value_or(RegistryDocument());
}

std::string TextOf(const RegistryDocument& document, const char* path, const char* name) {
    RegistryValue value;
    switch (document.FindValue(path, name, value)) {
        case Lookup::kMissing:
            return "missing";
        case Lookup::kDamaged:
            return "damaged";
        case Lookup::kFound:
            break;
    }
    return {value.data.begin(), value.data.end() - 1};
}

RegistryValue Value(const char* name, std::string_view text) {
    RegistryValue value{name, REG_SZ, {text.begin(), text.end()}};
    value.data.push_back(0);
    return value;
}

TEST(RegistryDocuments, ShowWhatAForeignFileSaysAndNoMore) {
    const RegistryDocument document = Parsed(kForeign);
    constexpr const char* kKey = "HKEY_CURRENT_USER\\SOFTWARE\\maker";
    const std::pair<const char*, const char*> kCases[] = {
        {"text", "two"},      {"Broken", "damaged"}, {"Cut", "damaged"},
        {"NEXT", "unharmed"}, {"Gone", "missing"},   {"", "missing"},
    };
    for (const auto& [name, answer] : kCases)
        EXPECT_EQ(TextOf(document, kKey, name), answer) << name;
    EXPECT_EQ(TextOf(document, "HKEY_CURRENT_USER\\Software\\Maker\\deep\\er", ""), "below");
    EXPECT_TRUE(document.HasKey("HKEY_CURRENT_USER\\Software"));
    EXPECT_FALSE(document.HasKey("HKEY_CURRENT_USER\\Soft"));
    EXPECT_FALSE(document.HasKey("HKEY_CURRENT_USER\\Software\\Maker\\Old"));
    EXPECT_THAT(document.SubkeysOf("HKEY_CURRENT_USER\\Software"), ElementsAre("Maker"));
    EXPECT_THAT(document.SubkeysOf(kKey), ElementsAre("Deep"));
    EXPECT_THAT(document.SubkeysOf("HKEY_CURRENT_USER\\Software\\Maker\\Deep\\Er"), IsEmpty());
}

TEST(RegistryDocuments, ChangeOneValueAndLeaveEveryOtherLine) {
    for (const std::string lineEnd : {"\n", "\r\n"}) {
        std::string before = kForeign;
        for (std::size_t i = 0; lineEnd == "\r\n" && (i = before.find('\n', i)) != before.npos; i += 2)
            before.insert(i, 1, '\r');
        before = "\xEF\xBB\xBF" + before;
        RegistryDocument document = Parsed(before);
        EXPECT_EQ(document.Text(), before);

        document.SetValue("HKEY_CURRENT_USER\\SOFTWARE\\Maker", Value("text", "three"));
        document.SetValue("HKEY_CURRENT_USER\\Software\\Maker", Value("Broken", "mended"));
        document.SetValue("HKEY_CURRENT_USER\\Software\\Maker", Value("New", ""));
        std::string after = before;
        const std::pair<std::string, std::string> kChanges[] = {
            {"\"Text\"=\"two\"", "\"text\"=\"three\""},
            {"\"Broken\"=hex:01,zz,\\" + lineEnd + "  03", "\"Broken\"=\"mended\""},
            {"\"Gone\"=-", "\"Gone\"=-" + lineEnd + "\"New\"=\"\""},
        };
        for (const auto& [old, changed] : kChanges)
            after.replace(after.find(old), old.size(), changed);
        EXPECT_EQ(document.Text(), after);
    }
}

TEST(RegistryDocuments, GrowAndShrinkByKeys) {
    RegistryDocument document;
    document.SetValue("HKEY_CURRENT_USER\\A\\B", Value("", "x"));
    document.AddKey("HKEY_CURRENT_USER\\A\\C");
    document.AddKey("HKEY_CURRENT_USER\\a\\c");
    EXPECT_EQ(document.Text(),
              "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\A]\n\n"
              "[HKEY_CURRENT_USER\\A\\B]\n@=\"x\"\n\n[HKEY_CURRENT_USER\\A\\C]\n");
    document.RemoveKey("hkey_current_user\\A\\B");
    EXPECT_THAT(document.SubkeysOf("HKEY_CURRENT_USER\\A"), ElementsAre("C"));

    // A key that exists only through one below it outlives that one.
    RegistryDocument implied = Parsed("Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A\\B\\C]");
    implied.RemoveKey("HKEY_CURRENT_USER\\A\\B\\C");
    EXPECT_TRUE(implied.HasKey("HKEY_CURRENT_USER\\A\\B"));
    EXPECT_FALSE(implied.HasKey("HKEY_CURRENT_USER\\A\\B\\C"));
}

TEST(RegistryDocuments, OfAnotherFormatAreRefused) {
    for (const char* text : {"REGEDIT4\n", "\n", "[HKEY_CURRENT_USER]\n", "\xFF\xFEW",
                             "Windows Registry Editor Version 6.00\n", "binary\x01"}) {
        EXPECT_FALSE(RegistryDocument::Parse(text)) << text;
    }
    EXPECT_TRUE(RegistryDocument::Parse(""));
}

TEST(RegistryDocuments, KeepLongValuesOverManyLines) {
    RegistryDocument document;
    RegistryValue value{"ProgramSettings", REG_BINARY, {}};
    for (int i = 0; i < 304; ++i)
        value.data.push_back(static_cast<std::uint8_t>(i * 7));
    document.SetValue("HKEY_CURRENT_USER\\A", value);
    const std::string text = document.Text();
    for (std::size_t start = 0, end = 0; (end = text.find('\n', start)) != text.npos; start = end + 1)
        EXPECT_LE(end - start, 80U);
    RegistryValue found;
    ASSERT_EQ(Parsed(text).FindValue("HKEY_CURRENT_USER\\A", "programsettings", found), Lookup::kFound);
    EXPECT_EQ(found.data, value.data);
    EXPECT_EQ(found.type, REG_BINARY);
}

}  // namespace
}  // namespace permora::host
