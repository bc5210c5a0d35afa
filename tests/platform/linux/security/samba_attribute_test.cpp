#include "platform/linux/security/samba_attribute.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/nt/byte_io.h"

namespace permora::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A descriptor with an owner and a list: D:(A;;FA;;;WD), owner BA.
Bytes SampleDescriptor(std::size_t offsetBase) {
    const auto owner = static_cast<std::uint8_t>(20 + offsetBase);
    const auto list = static_cast<std::uint8_t>(36 + offsetBase);
    return {1, 0, 4,  0x80, owner, 0, 0, 0, 0,  0, 0,  0, 0,    0, 0,    0, list, 0, 0, 0,  // header
            1, 2, 0,  0,    0,     0, 0, 5, 32, 0, 0,  0, 0x20, 2, 0,    0,                 // owner
            2, 0, 28, 0,    1,     0, 0, 0, 0,  0, 20, 0, 0xFF, 1, 0x1F, 0, 1,    1, 0, 0,
            0, 0, 0,  1,    0,     0, 0, 0};
}

Bytes Zeros(std::size_t count) {
    return Bytes(count, 0);
}

Bytes Joined(std::initializer_list<Bytes> pieces) {
    Bytes all;
    for (const Bytes& piece : pieces)
        nt::AppendBytes(all, piece);
    return all;
}

const Bytes kPointer = {4, 0, 2, 0};

// The bytes before the descriptor in each version.
const Bytes kPrefixes[] = {
    Joined({{1, 0, 1, 0}, kPointer}),
    Joined({{2, 0, 2, 0}, kPointer, kPointer, Zeros(16)}),
    Joined({{3, 0, 3, 0}, kPointer, kPointer, {1, 0}, Zeros(64), Zeros(2)}),
    Joined({{4, 0, 4, 0}, kPointer, kPointer, {1, 0}, Zeros(64), {'p', 'o', 's', 'i', 'x', 0}, Zeros(72)}),
    Joined({{4, 0, 4, 0}, kPointer, kPointer, {1, 0}, Zeros(64), {0}, Zeros(1), Zeros(72)}),
};

TEST(SambaAttribute, DescriptorIsFoundInEveryVersion) {
    for (const Bytes& prefix : kPrefixes) {
        Bytes descriptor;
        ASSERT_TRUE(
            DescriptorFromSambaAttribute(Joined({prefix, SampleDescriptor(prefix.size())}), descriptor));
        EXPECT_EQ(descriptor, SampleDescriptor(0)) << "version " << int{prefix[0]};
    }
}

TEST(SambaAttribute, WhatIsWrittenIsVersion1AndReadsBackTheSame) {
    Bytes attribute;
    MakeSambaAttribute(SampleDescriptor(0), attribute);
    EXPECT_EQ(attribute, Joined({{1, 0, 1, 0}, {0, 0, 2, 0}, SampleDescriptor(8)}));
}

TEST(SambaAttribute, EveryTruncationInFrontOfTheListIsRefused) {
    const Bytes untouched = {7};
    for (const Bytes& prefix : kPrefixes) {
        const Bytes whole = Joined({prefix, SampleDescriptor(prefix.size())});
        for (std::size_t size = 0; size < prefix.size() + 20; ++size) {
            Bytes descriptor = untouched;
            EXPECT_FALSE(DescriptorFromSambaAttribute(std::span(whole).first(size), descriptor));
            EXPECT_EQ(descriptor, untouched);
        }
    }
}

TEST(SambaAttribute, DamagedFieldsAreRefused) {
    struct {
        const char* what;
        std::size_t prefix;
        std::size_t position;
        std::uint8_t value;
    } const damages[] = {
        {"unknown version", 0, 0, 5},
        {"versions differ", 0, 2, 2},
        {"null pointer", 0, 6, 0},
        {"null second pointer", 2, 10, 0},
        {"owner in front of the descriptor", 2, 84, 79},
        {"owner at the descriptor itself", 2, 84, 80},
        {"owner inside the header", 2, 84, 99},
        {"list in front of the descriptor", 0, 24, 1},
    };
    for (const auto& damage : damages) {
        const Bytes& prefix = kPrefixes[damage.prefix];
        Bytes attribute = Joined({prefix, SampleDescriptor(prefix.size())});
        attribute[damage.position] = damage.value;
        if (std::string(damage.what).find("pointer") != std::string::npos) attribute[damage.position - 2] = 0;
        Bytes descriptor;
        EXPECT_FALSE(DescriptorFromSambaAttribute(attribute, descriptor)) << damage.what;
    }
}

TEST(SambaAttribute, DescriptionWithoutEndIsRefused) {
    Bytes attribute = Joined({kPrefixes[3], SampleDescriptor(kPrefixes[3].size())});
    std::fill(attribute.begin() + 78, attribute.end(), std::uint8_t{'x'});
    Bytes descriptor;
    EXPECT_FALSE(DescriptorFromSambaAttribute(attribute, descriptor));
}

}  // namespace
}  // namespace permora::host
