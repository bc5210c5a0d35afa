#include "survey/survey.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "platform/api/security.h"
#include "platform/security_change.h"
#include "saved/tree_source.h"
#include "security/object_server.h"

namespace permora {
namespace {

std::size_t HashOf(std::span<const std::uint8_t> bytes) {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::size_t Survey::SecurityHash::operator()(const SecurityKey& key) const {
    return HashOf(key.bytes);
}

std::size_t Survey::SecurityHash::operator()(const DistinctSecurity* security) const {
    return HashOf(security->bytes);
}

bool Survey::SecurityEqual::operator()(const SecurityKey& one, const DistinctSecurity* other) const {
    return one.isStored == other->isStored && std::ranges::equal(one.bytes, other->bytes);
}

// One walk: counts and judges what it comes to.
class SurveyWalk : public TreeVisitor {
  public:
    SurveyWalk(Survey& whole, SurveyObserver& listener, std::size_t number, const DistinctSecurity* aboveTop)
        : survey(whole), observer(listener), top(number), folderOfTop(aboveTop) {}

    bool Visit(const ReadObject& object) override {
        if (object.kind == SavedKind::kUnlisted) {
            ++survey.counts.unlisted;
            // When the rest of a folder got out of reach, that has been handed out, and what was last come to
            // says why.
            if (!isBehindFolder) return true;
            pending.remarks.Add(Remark::kUnlisted);
            pending.error = object.error;
            isPending = true;
            return true;
        }
        HandOutPending();
        isBehindFolder = false;
        if (!observer.Begin(object.path)) return false;
        if (object.kind == SavedKind::kMounted)
            ++survey.counts.mounted;
        else
            Take(object);
        return true;
    }

    // A folder waits, since it is reported right behind it that it could not be listed.
    void HandOutPending() {
        if (!isPending) return;
        isPending = false;
        pending.path = pendingPath;
        HandOut(pending);
    }

  private:
    // A folder on the way to what was come to last.
    struct Level {
        std::size_t pathLength;
        const DistinctSecurity* security;  // null: it could not be read
    };

    const DistinctSecurity* Above(std::string_view path) {
        if (path.empty()) return folderOfTop;
        const std::size_t separator = path.rfind('\\');
        const std::size_t length = separator == path.npos ? 0 : separator;
        while (!levels.empty() && levels.back().pathLength > length)
            levels.pop_back();
        return levels.empty() ? nullptr : levels.back().security;
    }

    void Take(const ReadObject& object) {
        SurveyRow row{.path = object.path, .top = top, .kind = object.is, .error = object.error};
        const DistinctSecurity* const above = Above(object.path);
        const DistinctSecurity* own = nullptr;
        if (object.kind == SavedKind::kUnread) {
            ++survey.counts.unread;
            row.remarks.Add(object.error == ERROR_INVALID_SECURITY_DESCR ? Remark::kDamaged
                                                                         : Remark::kUnreadable);
        } else {
            DistinctSecurity& found = survey.Intern(object.descriptor, object.isStored);
            ++found.objects;
            own = &found;
            const SurveyPlace place = object.path.empty() ? SurveyPlace::kTop : SurveyPlace::kBelow;
            row.security = &survey.Judge(found, above, row.kind, place);
            row.remarks = row.security->remarks;
        }
        ++survey.counts.objects;
        const bool isFolder = row.kind == TreeObjectKind::kFolder;
        if (isFolder) ++survey.counts.folders;
        if (isFolder) levels.push_back({object.path.size(), own});
        if (isFolder) {
            pendingPath = object.path;
            pending = row;
            isBehindFolder = true;
            isPending = IsRow(row);
        } else if (IsRow(row)) {
            HandOut(row);
        }
    }

    static bool IsRow(const SurveyRow& row) { return row.path.empty() || !row.remarks.IsEmpty(); }

    void HandOut(const SurveyRow& row) {
        for (const Remark remark : row.remarks)
            ++survey.counts.rows.at(static_cast<std::size_t>(remark));
        observer.Take(row);
    }

    Survey& survey;
    SurveyObserver& observer;
    const std::size_t top;
    const DistinctSecurity* const folderOfTop;
    std::vector<Level> levels;
    std::string pendingPath;
    SurveyRow pending;
    bool isPending = false;
    bool isBehindFolder = false;  // what `pending` is about was come to last
};

DistinctSecurity& Survey::Intern(std::span<const std::uint8_t> bytes, bool isStored) {
    const auto found = byBytes.find(SecurityKey{bytes, isStored});
    if (found != byBytes.end()) return **found;
    DistinctSecurity& added = distinct.emplace_back();
    added.number = distinct.size() - 1;
    added.bytes.assign(bytes.begin(), bytes.end());
    added.isStored = isStored;
    byBytes.insert(&added);
    return added;
}

const JudgedSecurity& Survey::Judge(const DistinctSecurity& own, const DistinctSecurity* above,
                                    TreeObjectKind kind, SurveyPlace place) {
    constexpr unsigned kNumberBits = 31;
    const std::uint64_t aboveNumber = above == nullptr ? 0 : above->number + 1;
    const std::uint64_t key =
        ((std::uint64_t{own.number} << kNumberBits | aboveNumber) << 2U) | static_cast<std::uint64_t>(kind);
    const bool isKept = place == SurveyPlace::kBelow;
    if (const auto found = byPlace.find(key); isKept && found != byPlace.end()) return *found->second;
    const RemarkSet remarks = JudgeSecurity(
        own, above, kind, place, [this](const nt::Sid& sid) { return accounts.Find(sid).standing; });
    judged.push_back({&own, above, kind, remarks});
    if (isKept) byPlace.emplace(key, &judged.back());
    return judged.back();
}

// Null where there is none, or nothing is known of it.
const DistinctSecurity* Survey::FolderOf(const HeldObject& top) {
    ReadParts above;
    if (top.ReadAbove(kUsualParts, above) != ERROR_SUCCESS || !above.descriptor) return nullptr;
    const std::span bytes(static_cast<const std::uint8_t*>(above.descriptor.get()),
                          GetSecurityDescriptorLength(above.descriptor.get()));
    return nt::SecurityDescriptor::FromBytes(bytes) ? &Intern(bytes, true) : nullptr;
}

DWORD Survey::Walk(const HeldObject& top, SurveyObserver& observer) {
    isAnyOfServer = isAnyOfServer || !ServerOfObject(top).empty();
    SurveyWalk walk(*this, observer, tops++, FolderOf(top));
    const DWORD error = ReadTree(top, kUsualParts, walk);
    walk.HandOutPending();
    return error;
}

}  // namespace permora
