// What conditions consist of. Source: [MS-DTYP] 2.4.4.17.4 (tokens) to 2.4.4.17.8 (operators and attributes).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace permora::nt {

// The four bytes at the start of a condition, which identify a callback entry's data as one.
inline constexpr std::array<std::uint8_t, 4> kConditionSignature = {'a', 'r', 't', 'x'};

namespace token {
// clang-format off
inline constexpr std::uint8_t kPadding           = 0x00;
// Smaller numbers are stored in the same ten bytes; text has no words for the difference.
inline constexpr std::uint8_t kInt8              = 0x01;
inline constexpr std::uint8_t kInt64             = 0x04;
inline constexpr std::uint8_t kString            = 0x10;
inline constexpr std::uint8_t kOctets            = 0x18;
inline constexpr std::uint8_t kComposite         = 0x50;
inline constexpr std::uint8_t kSid               = 0x51;
inline constexpr std::uint8_t kLocalAttribute    = 0xF8;
inline constexpr std::uint8_t kUserAttribute     = 0xF9;
inline constexpr std::uint8_t kResourceAttribute = 0xFA;
inline constexpr std::uint8_t kDeviceAttribute   = 0xFB;
inline constexpr std::uint8_t kAnd               = 0xA0;
inline constexpr std::uint8_t kOr                = 0xA1;
inline constexpr std::uint8_t kNot               = 0xA2;
// clang-format on
}  // namespace token

// The operands of an operator.
enum class OperatorKind {
    kMembership,  // word before a SID or several
    kExistence,   // word before an attribute
    kRelation,    // between an attribute and an attribute or a value
    kLogical,     // between conditions
    kNegation,    // before a condition
};

struct ConditionOperator {
    std::uint8_t code;
    OperatorKind kind;
    std::string_view word;  // as the system writes it; read in any case of letters
};

// clang-format off
inline constexpr ConditionOperator kConditionOperators[] = {
    {0x80, OperatorKind::kRelation,   "=="},
    {0x81, OperatorKind::kRelation,   "!="},
    {0x83, OperatorKind::kRelation,   "<="},  // before the shorter words that it begins with
    {0x82, OperatorKind::kRelation,   "<"},
    {0x85, OperatorKind::kRelation,   ">="},
    {0x84, OperatorKind::kRelation,   ">"},
    {0x86, OperatorKind::kRelation,   "Contains"},
    {0x87, OperatorKind::kExistence,  "Exists"},
    {0x88, OperatorKind::kRelation,   "Any_of"},
    {0x89, OperatorKind::kMembership, "Member_of"},
    {0x8A, OperatorKind::kMembership, "Device_Member_of"},
    {0x8B, OperatorKind::kMembership, "Member_of_any"},
    {0x8C, OperatorKind::kMembership, "Device_Member_of_Any"},
    {0x8D, OperatorKind::kExistence,  "Not_Exists"},
    {0x8E, OperatorKind::kRelation,   "Not_Contains"},
    {0x8F, OperatorKind::kRelation,   "Not_Any_of"},
    {0x90, OperatorKind::kMembership, "Not_Member_of"},
    {0x91, OperatorKind::kMembership, "Not_Device_Member_of"},
    {0x92, OperatorKind::kMembership, "Not_Member_of_Any"},
    {0x93, OperatorKind::kMembership, "Not_Device_Member_of_Any"},
    {token::kAnd, OperatorKind::kLogical,  "&&"},
    {token::kOr,  OperatorKind::kLogical,  "||"},
    {token::kNot, OperatorKind::kNegation, "!"},
};

struct AttributePrefix {
    std::uint8_t code;
    std::string_view word;
};
inline constexpr AttributePrefix kAttributePrefixes[] = {
    {token::kUserAttribute, "@USER."},
    {token::kResourceAttribute, "@RESOURCE."},
    {token::kDeviceAttribute, "@DEVICE."},
};
// clang-format on

}  // namespace permora::nt
