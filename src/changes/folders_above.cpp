#include "changes/folders_above.h"

#include <utility>

#include "platform/security_change.h"

namespace permora {
namespace {

SharedList Share(const nt::Acl& list, const SharedList& other = nullptr) {
    return other && *other == list ? other : std::make_shared<const nt::Acl>(list);
}

}  // namespace

FolderLists ListsOfFolder(const nt::SecurityDescriptor& before, const nt::SecurityDescriptor& after,
                          const FolderLists* above, const SharedList& basis) {
    FolderLists lists;
    lists.before = Share(ListOf(before), above != nullptr ? above->before : nullptr);
    lists.after = ListOf(after) == *lists.before ? lists.before : Share(ListOf(after), basis);
    return lists;
}

FolderLists ListsOfFolder(const nt::Acl& list) {
    const SharedList shared = Share(list);
    return {shared, shared};
}

void FoldersAbove::Enter(std::string_view path, std::shared_ptr<const FolderLists> lists) {
    levels.push_back({path.size(), std::move(lists)});
    deepest = path;
}

void FoldersAbove::LeaveTo(std::string_view path) {
    const auto holds = [&](std::size_t length) {
        return length == 0 ||
               (path.substr(length).starts_with('\\') && deepest.compare(0, length, path, 0, length) == 0);
    };
    while (!levels.empty() && !(path.size() > levels.back().length && holds(levels.back().length)))
        levels.pop_back();
    deepest.resize(levels.empty() ? 0 : levels.back().length);
}

std::shared_ptr<const FolderLists> FoldersAbove::ListsAbove(std::string_view path) const {
    if (path.empty()) return aboveTop;
    return levels.empty() ? nullptr : levels.back().lists;
}

}  // namespace permora
