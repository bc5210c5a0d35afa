#include "platform/linux/files/dos_attribute.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/hex.h"

namespace permora::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Form {
    const char* hex;
    std::uint16_t version;
    std::uint32_t attributes;
    const char* rewritten;
};

// Versions 5 as smbd 4.17 wrote them, the others laid out as it reads them.
const Form kForms[] = {
    {"0000050005000000110000002200000038931f91227cdd01", 5, 0x22,
     "0000050005000000110000002200000038931f91227cdd01"},
    {"000004000400000051000000200000000102030405060708a1a2a3a4a5a6a7a8", 4, 0x20,
     "000004000400000051000000200000000102030405060708a1a2a3a4a5a6a7a8"},
    {"30783232000003000300000011000000220000000000000000000000000000000000000000000000"
     "38931f91227cdd010000000000000000",
     3, 0x22,
     "000003000300000011000000220000000000000000000000000000000000000000000000"
     "38931f91227cdd010000000000000000"},
    {"30783236", 5, 0x26, "000005000500000001000000260000000000000000000000"},
    {"3078323600", 5, 0x26, "000005000500000001000000260000000000000000000000"},
};

TEST(DosAttribute, EveryFormIsReadAndItsOtherFieldsAreKept) {
    for (const Form& form : kForms) {
        SCOPED_TRACE(form.hex);
        const auto attribute = DosAttribute::FromBytes(Hex(form.hex));
        ASSERT_TRUE(attribute);
        EXPECT_EQ(attribute->version, form.version);
        EXPECT_EQ(attribute->attributes, form.attributes);
        EXPECT_TRUE(attribute->HasAttributes());
        EXPECT_EQ(attribute->ToBytes(), Hex(form.rewritten));
    }
}

TEST(DosAttribute, DamagedBytesAreRefused) {
    for (const Form& form : kForms) {
        const Bytes whole = Hex(form.hex);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            const auto attribute = DosAttribute::FromBytes(cut);
            // A truncated text may still be valid.
            EXPECT_TRUE(!attribute || size <= 6) << form.hex << " cut to " << size;
        }
    }
    for (const char* hex :
         {"0000050004000000110000002200000038931f91227cdd01", "00000600060000001100000022000000",
          "0000020002000000110000002200000000000000000000000000000000000000", "30787a7a", "3078", "3232",
          "307831323334353637383900", "ffffffffffffffffffffffffffffffffffff"}) {
        EXPECT_FALSE(DosAttribute::FromBytes(Hex(hex))) << hex;
    }
}

}  // namespace
}  // namespace permora::host
