// What is worth a look about an object of a tree.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace permora {

// docs/terminal.md describes each. The numbers are those of bits in a RemarkSet; the codes are part of the
// output for scripts and never change.
enum class Remark : std::uint8_t {
    // Where it departs from what its folder hands down.
    kOwnEntries,  // "own-entries": of a stored list; the entries that a mode gives are nobody's choice
    kProtected,   // "protected": it inherits nothing
    kOtherOwner,  // "other-owner": another than its folder's
    kStale,       // "stale-inheritance": its inherited entries are not what its folder hands down

    // Accounts that the owner or an entry names. What an object has from its folder is remarked on there.
    kDeletedAccount,  // "deleted-account": of this machine, or of a domain that is known and has it no more
    kUnknownAccount,  // "unknown-account": of another machine, or of a domain that is not known here
    kBrokenSid,       // "broken-sid": no account can have it
    kNameUnasked,     // "unasked-account": who knows did not answer, so nothing is said about it

    // Lists.
    kOpenToAll,     // "open-to-all": Everyone, Authenticated Users or Users may write (kOpenRights)
    kNullList,      // "null-list": there is no list, and everyone may do everything
    kEmptyList,     // "empty-list": nobody may do anything
    kDenial,        // "denial": an entry of its own denies
    kUnusualOrder,  // "unusual-order"
    kDamaged,       // "damaged": the descriptor is not valid
    kUnreadable,    // "unreadable": the descriptor could not be read
    kUnlisted,      // "unlisted": the names in the folder could not be read, or not to their end

    // On a file server's shares, whose mode bits were compared with the lists (survey/mode_comparison.h).
    kModeKeepsOut,  // "mode-keeps-out": accounts that the list lets in
    kModeLetsIn,    // "mode-lets-in": accounts that the list keeps out
    kModeUnasked,   // "mode-unasked": whether they do either is not known
};
inline constexpr std::size_t kRemarkCount = 19;
// Surveys make the remarks before this one.
inline constexpr std::size_t kSurveyRemarkCount = 16;

// Null-terminated; lives for the whole process.
const char* CodeOf(Remark remark);
std::optional<Remark> RemarkOf(std::string_view code);
// For people, in half a sentence: "has entries of its own".
const char* TextOf(Remark remark);

class RemarkSet {
  public:
    // In the order of the enumeration.
    class Iterator {
      public:
        constexpr explicit Iterator(std::uint32_t left) : bits(left) {}
        constexpr Remark operator*() const { return static_cast<Remark>(std::countr_zero(bits)); }
        constexpr Iterator& operator++() {
            bits &= bits - 1;
            return *this;
        }
        friend constexpr bool operator==(Iterator, Iterator) = default;

      private:
        std::uint32_t bits;
    };

    constexpr RemarkSet() = default;
    constexpr RemarkSet(std::initializer_list<Remark> remarks) {
        for (const Remark remark : remarks)
            Add(remark);
    }

    constexpr void Add(Remark remark) { bits |= BitOf(remark); }
    constexpr bool Has(Remark remark) const { return (bits & BitOf(remark)) != 0; }
    constexpr bool HasAnyOf(RemarkSet others) const { return (bits & others.bits) != 0; }
    constexpr bool IsEmpty() const { return bits == 0; }

    constexpr Iterator begin() const { return Iterator(bits); }  // NOLINT(readability-identifier-naming)
    constexpr Iterator end() const { return Iterator(0); }       // NOLINT(readability-identifier-naming)

    friend constexpr bool operator==(RemarkSet, RemarkSet) = default;

  private:
    static constexpr std::uint32_t BitOf(Remark remark) { return 1U << static_cast<unsigned>(remark); }

    std::uint32_t bits = 0;
};

}  // namespace permora
