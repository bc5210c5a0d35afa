// The readers of resources: unusual and damaged bytes.
#include "framework/resource_templates.h"

#include <gtest/gtest.h>

#include <string_view>

#include "framework/resource_file.h"
#include "resources/embedded_resources.h"

namespace permora {
namespace {

// Writes resource bytes as a compiler would.
class Bytes {
  public:
    Bytes& U16(unsigned int value) {
        Append(value & 0xFFU);
        Append(value >> 8U & 0xFFU);
        return *this;
    }
    Bytes& U32(unsigned int value) { return U16(value & 0xFFFFU).U16(value >> 16U); }
    Bytes& Text(std::u16string_view text) {
        for (const char16_t unit : text)
            U16(unit);
        return U16(0);
    }
    Bytes& Align() {
        while (bytes.size() % 4 != 0)
            Append(0);
        return *this;
    }
    std::span<const std::byte> Span() const { return bytes; }

  private:
    void Append(unsigned int value) { bytes.push_back(static_cast<std::byte>(value)); }
    std::vector<std::byte> bytes;
};

// With a font, and one control with a long id.
Bytes Dialog() {
    Bytes bytes;
    bytes.U16(1).U16(0xFFFF).U32(0).U32(0).U32(0x80C80040).U16(1).U16(0).U16(0).U16(100).U16(50);
    bytes.U16(0).U16(0).Text(u"Gr\u00FC\u00DFe \U0001F512").U16(8).U32(0).Text(u"MS Shell Dlg").Align();
    bytes.U32(0).U32(0).U32(0x50010000).U16(7).U16(0xFFFE).U16(50).U16(14).U32(70'000);
    return bytes.U16(0xFFFF).U16(0x80).Text(u"OK").U16(0);
}

TEST(DialogTemplates, NegativePlacesAndLongIdsAreRead) {
    const auto dialog = ParseDialogTemplate(Dialog().Span());
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->caption,
              "Gr\xC3\xBC\xC3\x9F"
              "e \xF0\x9F\x94\x92");
    EXPECT_EQ(dialog->size, (Size{100, 50}));
    ASSERT_EQ(dialog->controls.size(), 1U);
    EXPECT_EQ(dialog->controls[0].id, 70'000U);
    EXPECT_EQ(dialog->controls[0].className, "BUTTON");
    EXPECT_EQ(dialog->controls[0].text, "OK");
    EXPECT_EQ(dialog->controls[0].rect, (Rect{7, -2, 57, 12}));
}

TEST(MenuTemplates, EndlessNestingIsRefused) {
    Bytes bytes;
    bytes.U16(0).U16(0);
    for (int i = 0; i < 100'000; ++i)
        bytes.U16(0x90).Text(u"x");
    EXPECT_FALSE(ParseMenuTemplate(bytes.Span()));
}

TEST(StringTables, HalvesOfCharactersBecomeReplacements) {
    Bytes bytes;
    bytes.U16(0).U16(3).U16('a').U16(0xD800).U16('b').U16(1).U16(0xDC00);
    EXPECT_EQ(ParseStringBlock(bytes.Span(), 0), "");
    EXPECT_EQ(ParseStringBlock(bytes.Span(), 1),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(ParseStringBlock(bytes.Span(), 2), "\xEF\xBF\xBD");
    EXPECT_EQ(ParseStringBlock(bytes.Span(), 3), "");
}

// Whatever a file is cut to, its readers say so, and read no byte behind the end (the sanitizers watch).
TEST(ResourceReaders, CutBytesAreRefused) {
    const Bytes whole = Dialog();
    for (std::size_t size = 0; size < whole.Span().size(); ++size) {
        const std::vector<std::byte> cut(whole.Span().begin(),
                                         whole.Span().begin() + static_cast<long>(size));
        EXPECT_FALSE(ParseDialogTemplate(cut)) << size;
    }
    const auto file = EmbeddedResources().first(4096);
    for (std::size_t size = 1; size < file.size(); ++size) {
        const std::vector<std::byte> cut(file.begin(), file.begin() + static_cast<long>(size));
        const auto entries = ReadResourceFile(cut);
        if (!entries) continue;
        std::size_t end = 32;  // of the last entry, which may be the empty one: only padding may follow
        for (const ResourceEntry& entry : *entries)
            end = static_cast<std::size_t>(entry.data.data() + entry.data.size() - cut.data());
        EXPECT_LT(cut.size() - end, 4U) << size;
    }
}

}  // namespace
}  // namespace permora
