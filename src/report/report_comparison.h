// Who has gained and who has lost access between two reports of a tree.
//
// A report lists only objects that differ from what their folder hands down, so what an object had that only
// one of them lists follows from the nearest folder above it in the other: it had what that hands down. Where
// that hands down nothing (the object's mode on the host decides), or could not be read, nothing is said.
//
// What a folder has says nothing about what it hands down. So each folder is compared in three places:
// itself, the folders in it, the files in it. A difference is reported where it begins, not again at
// everything below that shares it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "report/report_reader.h"

namespace permora {

enum class AccessChangeKind : std::uint8_t {
    kGained,
    kLost,
    kBoth,      // some rights gained and others lost
    kAsBefore,  // unlike what is above it
};

// The change of one account's rights at one object and, as far as `where` says, below.
struct AccessChange {
    AccessChangeKind kind = AccessChangeKind::kGained;
    std::size_t account = 0;   // its place in ReportComparison::Accounts
    std::uint32_t before = 0;  // rights, without SYNCHRONIZE
    std::uint32_t after = 0;
    std::string where;  // of a folder: "This folder and subfolders"; empty: the object
};

struct ChangedOwner {
    std::optional<nt::Sid> before;
    std::optional<nt::Sid> after;
};

struct ComparedObjectAccess {
    std::string path;     // below its top
    std::size_t top = 0;  // in the newer report
    std::optional<ChangedOwner> owner;
    std::vector<AccessChange> changes;
    bool isUnknown = false;  // nothing could be said of it, or of a part of it
};

class AccessObserver {
  public:
    virtual ~AccessObserver() = default;
    // False ends the comparison.
    virtual bool Begin() = 0;
    // Only objects with something to say.
    virtual void Take(const ComparedObjectAccess& object) = 0;
};

// An account that either report names.
struct ComparedAccount {
    nt::Sid sid;
    std::string name;
    // Whether its groups are not known in one of them: its rights are those that it has by itself there.
    bool isWithoutGroups = false;
};

class ReportComparison {
  public:
    // Both are borrowed.
    ReportComparison(const ReadReport& older, const ReadReport& newer);

    const std::vector<ComparedAccount>& Accounts() const { return accounts; }
    // Tops of either report that the other has not, by their full paths. Two reports of one top each are
    // compared wherever these are.
    const std::vector<std::string>& UnmatchedTops() const { return unmatched; }
    // How many objects were looked at. False when the observer has ended it.
    bool Run(AccessObserver& observer, std::size_t& objects) const;

  private:
    void JoinAccounts();
    void MatchTops();

    const ReadReport& older;
    const ReadReport& newer;
    std::vector<ComparedAccount> accounts;
    // For each account, what stands for it in lists.
    std::vector<std::vector<nt::Sid>> holdersBefore;
    std::vector<std::vector<nt::Sid>> holdersAfter;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> topPairs;
    std::vector<std::string> unmatched;
};

}  // namespace permora
