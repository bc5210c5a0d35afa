#include "cli/change_output.h"

#include <utility>

#include "cli/difference_output.h"

namespace permora {
namespace {

// Standard error has all messages, so a document need not.
constexpr std::size_t kMostParts = 20'000;
constexpr std::size_t kMostTextBytes = std::size_t{16} << 20U;

// Of the texts in what a difference shows.
std::size_t BytesOf(const std::vector<ComparedRow>& rows) {
    std::size_t bytes = 0;
    for (const ComparedRow& row : rows)
        bytes += row.name.size() + row.before.size() + row.after.size();
    return bytes;
}

Json CountsJson(const ObjectCounts& counts) {
    return {{"changed", counts.changed}, {"already", counts.already}, {"failed", counts.failed}};
}

}  // namespace

ObjectCounts ObjectCounts::operator-(const ObjectCounts& earlier) const {
    return {changed - earlier.changed, already - earlier.already, failed - earlier.failed};
}

ObjectCounts& ObjectCounts::operator+=(const ObjectCounts& more) {
    changed += more.changed;
    already += more.already;
    failed += more.failed;
    return *this;
}

ObjectCounts CountsOf(const TreeCounts& counts) {
    return {counts.changed, counts.unchanged, counts.passedOver};
}

ChangeOutput::ChangeOutput(Command& owner, ConsoleMessages& console, const char* dryRunDescription)
    : command(owner), messages(console), json(owner) {
    if (dryRunDescription == nullptr) return;
    dryRun.emplace(owner, "--dry-run", dryRunDescription);
    check.emplace(owner, "--check",
                  "A dry run for scripts: ends with 0 when there is nothing to do, with 1 when\n"
                  "something would change, and with 3 when that is not known of everything");
}

void ChangeOutput::DryRunNeeds(const Flag& option) {
    dryRun->Needs(option);
    check->Needs(option);
}

void ChangeOutput::DryRunNeeds(const TextOption& option) {
    dryRun->Needs(option);
    check->Needs(option);
}

void ChangeOutput::Start() {
    if (IsCheck()) command.SetFailureCode(ExitCode::kCheckFailed);
    if (json) messages.SetListener(this);
}

bool ChangeOutput::Keep(std::size_t parts, std::size_t bytes) {
    if (!json) return false;
    const bool hasRoom = kept + parts <= kMostParts && keptBytes + bytes <= kMostTextBytes;
    if (!hasRoom) {
        ++leftOut;
        return false;
    }
    kept += parts;
    keptBytes += bytes;
    return true;
}

void ChangeOutput::Hear(const std::string& subject, const std::string& text, DWORD code) {
    if (!Keep(1, subject.size() + text.size())) return;
    Json message = {{"path", subject}, {"text", text}};
    message["code"] = code == 0 ? Json() : Json(code);
    if (isInObject)
        object["messages"].push_back(std::move(message));
    else
        otherMessages.push_back(std::move(message));
}

void ChangeOutput::BeginObject(const std::string& path) {
    object = {{"path", path}, {"result", ""}};
    tree = {};
    isInObject = true;
    isChanged = isFailed = isTree = false;
}

void ChangeOutput::BeginBelow(const std::string& path) {
    BeginObject(path);
    object["below"] = true;
}

void ChangeOutput::Count(const ObjectCounts& objects) {
    isTree = true;
    tree += objects;
}

void ChangeOutput::AddDifference(const std::string& path, const std::vector<ComparedRow>& rows) {
    if (Keep(1 + rows.size(), path.size() + BytesOf(rows)))
        object["differences"].push_back({{"path", path}, {"rows", RowsJson(rows)}});
}

void ChangeOutput::AddMember(const char* key, Json value) {
    if (json) object[key] = std::move(value);
}

void ChangeOutput::EndObject(bool isDone) {
    isInObject = false;
    isFailed = isFailed || !isDone || tree.failed > 0;
    isChanged = isTree ? tree.changed > 0 : isChanged;
    // What went wrong with the tree as a whole is no object of it.
    if (isTree && isFailed && tree.failed == 0) tree.failed = 1;
    if (isTree)
        all += tree;
    else
        ++(isFailed ? all.failed : isChanged ? all.changed : all.already);
    if (!Keep(1, object["path"].get_ref<const std::string&>().size())) return;
    object["result"] = isFailed ? "failed" : isChanged ? "changed" : "already";
    if (isTree) object["objects"] = CountsJson(tree);
    results.push_back(std::exchange(object, Json()));
}

Json ChangeOutput::Summary() const {
    Json summary = CountsJson(all);
    summary.update(moreSummary);
    return summary;
}

// The members behind the results.
Json ChangeOutput::EndDocument() {
    messages.SetListener(nullptr);
    return {{"written", !isShowing && !IsDryRun()},
            {"change", changeNumber == 0 ? Json() : Json(changeNumber)},
            {"summary", Summary()},
            {"messages", otherMessages},
            {"leftOut", leftOut}};
}

ExitCode ChangeOutput::Conclude(ExitCode code) const {
    if (!IsCheck() || code == ExitCode::kUsage) return code;
    if (code != ExitCode::kDone || all.failed > 0) return ExitCode::kCheckFailed;
    return all.changed > 0 ? ExitCode::kWouldChange : ExitCode::kDone;
}

ExitCode ChangeOutput::Finish(ExitCode code) {
    const Json rest = EndDocument();
    if (json && code != ExitCode::kUsage) PrintJson(command.Name(), results, rest);
    return Conclude(code);
}

}  // namespace permora
