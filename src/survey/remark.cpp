#include "survey/remark.h"

#include <algorithm>
#include <array>

namespace permora {
namespace {

struct RemarkRow {
    const char* code;
    const char* text;
};

// In the order of the enumeration.
constexpr std::array<RemarkRow, kRemarkCount> kRows = {{
    {"own-entries", "has entries of its own"},
    {"protected", "inherits nothing from its folder"},
    {"other-owner", "has another owner than its folder"},
    {"stale-inheritance", "has other inherited entries than its folder hands down"},
    {"deleted-account", "names an account that was deleted"},
    {"unknown-account", "names an account of a machine or domain that is not known here"},
    {"broken-sid", "names a SID that no account can have"},
    {"unasked-account", "names an account that could not be asked about"},
    {"open-to-all", "lets everyone write"},
    {"null-list", "has no access list, so everyone may do everything"},
    {"empty-list", "has an empty access list, so nobody may do anything"},
    {"denial", "has entries of its own that deny"},
    {"unusual-order", "has its entries in an unusual order"},
    {"damaged", "has a damaged descriptor"},
    {"unreadable", "could not be read"},
    {"unlisted", "could not be listed"},
    {"mode-keeps-out", "has mode bits that keep out whom its list lets in"},
    {"mode-lets-in", "has mode bits that let in whom its list keeps out"},
    {"mode-unasked", "could not be compared with its mode bits"},
}};

}  // namespace

const char* CodeOf(Remark remark) {
    return kRows.at(static_cast<std::size_t>(remark)).code;
}

std::optional<Remark> RemarkOf(std::string_view code) {
    const auto row =
        std::ranges::find(kRows, code, [](const RemarkRow& each) { return std::string_view(each.code); });
    if (row == kRows.end()) return std::nullopt;
    return static_cast<Remark>(row - kRows.begin());
}

const char* TextOf(Remark remark) {
    return kRows.at(static_cast<std::size_t>(remark)).text;
}

}  // namespace permora
