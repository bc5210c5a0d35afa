// The words of our own text form of saved lists, for its reader and its writer. docs/saved-lists.md shows it
// with an example.
//
//     permora-lists 1                              the version of the form
//     saved 2026-11-26T08:02:11Z
//     parts owner group dacl sacl
//     top C:/srv/data                              once for each top, with the next line
//     volume ext4 1a2b3c4d Data
//     list 5d41402abc4b O:BAG:BAD:PAI(A;OICI;FA;;;BA)
//     folder 5d41402abc4b .
//     file 5d41402abc4b letters/may.txt
//     end complete 2 sha256 9f86d081...            objects, and the hash of all lines before this one
//
// Further lines: "list64 ID BASE64" for a descriptor that SDDL cannot say exactly, "link" and "other" like
// "file", "mounted PATH", "unread CODE PATH", "unlisted CODE PATH", and "forget", after which no descriptor
// is known: so neither side needs memory for more than a fixed number. A text in which something is unread or
// unlisted ends with "end incomplete".
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "saved/saved_list.h"

namespace permora::own_form {

inline constexpr std::string_view kName = "permora-lists";
inline constexpr std::string_view kVersion = "1";

inline constexpr std::string_view kSaved = "saved";
inline constexpr std::string_view kParts = "parts";
inline constexpr std::string_view kTop = "top";
inline constexpr std::string_view kVolume = "volume";
inline constexpr std::string_view kList = "list";
inline constexpr std::string_view kList64 = "list64";
inline constexpr std::string_view kForget = "forget";
inline constexpr std::string_view kEnd = "end";
inline constexpr std::string_view kComplete = "complete";
inline constexpr std::string_view kIncomplete = "incomplete";
inline constexpr std::string_view kSha256 = "sha256";

inline constexpr std::array<std::pair<SECURITY_INFORMATION, std::string_view>, 4> kPartWords = {{
    {OWNER_SECURITY_INFORMATION, "owner"},
    {GROUP_SECURITY_INFORMATION, "group"},
    {DACL_SECURITY_INFORMATION, "dacl"},
    {SACL_SECURITY_INFORMATION, "sacl"},
}};

inline constexpr std::array<std::pair<SavedKind, std::string_view>, 7> kKindWords = {{
    {SavedKind::kFile, "file"},
    {SavedKind::kFolder, "folder"},
    {SavedKind::kLink, "link"},
    {SavedKind::kOther, "other"},
    {SavedKind::kMounted, "mounted"},
    {SavedKind::kUnread, "unread"},
    {SavedKind::kUnlisted, "unlisted"},
}};

// The descriptors that are known between two "forget" lines take at most so much: their bytes, and what each
// costs beside them.
inline constexpr std::size_t kMostKnownBytes = std::size_t{16} << 20;
inline constexpr std::size_t KnownBytesOf(std::size_t descriptorBytes) {
    return descriptorBytes + 128;
}

}  // namespace permora::own_form
