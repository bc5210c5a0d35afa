#include "history/object_reader.h"

#include <span>
#include <string_view>
#include <utility>

#include "history/stored_rows.h"

namespace permora {
namespace {

constexpr std::size_t kMostKeptBytes = std::size_t{8} << 20;

// Of a question for a row that must be there.
DWORD WithoutRow(const Statement& question) {
    return question.Error() == ERROR_SUCCESS ? ERROR_FILE_CORRUPT : question.Error();
}

}  // namespace

DWORD ObjectReader::ReadFolder(std::int64_t number, std::int64_t& above, std::string& name) {
    askFolder.Bind(change, number);
    if (!askFolder.Next()) return WithoutRow(askFolder);
    folderTop = askFolder.Number(0);
    above = askFolder.Number(1);
    name = askFolder.Text(2);
    // A folder stands above those with greater numbers, so a damaged file leads to no endless way.
    const bool isValid =
        above >= 0 && above < number && IsBareName(name) && name.empty() == (above == 0) &&
        askFolder.Number(3) == Seal::Of(change, number, folderTop, above, std::string_view(name));
    return isValid ? ERROR_SUCCESS : ERROR_FILE_CORRUPT;
}

// Of the steps, those stay whose folder can be `number` or above it.
void ObjectReader::LeaveAbove(std::int64_t number) {
    while (!steps.empty() && steps.back().number > number)
        steps.pop_back();
}

// `names` begins with the deepest.
DWORD ObjectReader::Descend(const std::vector<Name>& names) {
    path.resize(steps.empty() ? 0 : steps.back().end);
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (!path.empty()) path += '\\';
        path += name->text;
        if (path.size() > kMostPathBytes) return ERROR_FILE_CORRUPT;
        steps.push_back({name->folder, path.size()});
    }
    return ERROR_SUCCESS;
}

// From the folder up to a step that leads to it, and down again.
DWORD ObjectReader::FindFolder(std::int64_t number) {
    if (!steps.empty() && steps.back().number == number) return ERROR_SUCCESS;
    std::vector<Name> names;
    DWORD error = ERROR_SUCCESS;
    std::int64_t next = number;
    while (error == ERROR_SUCCESS && next != 0) {
        LeaveAbove(next);
        if (!steps.empty() && steps.back().number == next) break;
        Name name{next, {}};
        error = ReadFolder(next, next, name.text);
        names.push_back(std::move(name));
    }
    // To the top of another tree, or by another row of the same one.
    if (next == 0) steps.clear();
    if (error == ERROR_SUCCESS) error = Descend(names);
    if (error != ERROR_SUCCESS) steps.clear();
    return error;
}

DWORD ObjectReader::FindTop(std::int64_t number, ChangedTop& top) {
    if (topNumber != number) {
        askTop.Bind(change, number);
        if (!askTop.Next()) return WithoutRow(askTop);
        const std::string topPath = askTop.Text(0);
        const std::int64_t isFolder = askTop.Number(1);
        const std::span<const std::uint8_t> mark = askTop.Bytes(2);
        if (topPath.empty() || topPath.find('\0') != std::string::npos ||
            askTop.Number(3) != Seal::Of(change, number, std::string_view(topPath), isFolder, mark))
            return ERROR_FILE_CORRUPT;
        lastTop = {topPath, isFolder != 0, {mark.begin(), mark.end()}};
        topNumber = number;
    }
    top = lastTop;
    return ERROR_SUCCESS;
}

DWORD ObjectReader::FindDescriptor(std::int64_t number, StoredSecurity& stored) {
    if (const auto known = descriptors.find(number); known != descriptors.end()) {
        stored = known->second;
        return ERROR_SUCCESS;
    }
    askDescriptor.Bind(number);
    if (!askDescriptor.Next()) return WithoutRow(askDescriptor);
    const std::int64_t form = askDescriptor.Number(0);
    const std::int64_t owner = askDescriptor.Number(1);
    const std::span<const std::uint8_t> bytes = askDescriptor.Bytes(2);
    if (form < 0 || form > static_cast<std::int64_t>(SecurityForm::kShare) ||
        bytes.size() > kMostDescriptorBytes || owner < 0 || owner > UINT32_MAX)
        return ERROR_FILE_CORRUPT;
    StoredSecurity found{static_cast<SecurityForm>(form), {bytes.begin(), bytes.end()}, std::nullopt};
    if (!askDescriptor.IsNull(1)) found.hostOwner = static_cast<std::uint32_t>(owner);
    if (askDescriptor.Number(3) != HashOfKey(KeyOf(found))) return ERROR_FILE_CORRUPT;
    if (descriptorBytes > kMostKeptBytes) {
        descriptors.clear();
        descriptorBytes = 0;
    }
    constexpr std::size_t kBesideTheBytes = 128;
    descriptorBytes += found.bytes.size() + kBesideTheBytes;
    descriptors.emplace(number, found);
    stored = std::move(found);
    return ERROR_SUCCESS;
}

// Sets `period` to the one of this record.
DWORD ObjectReader::AskPeriod(std::int64_t number) {
    Period found{0, INT64_MAX, began};
    std::optional<std::int64_t> hasTimes;
    const DWORD error = database.Ask("SELECT 1 FROM sqlite_schema WHERE name='times'", hasTimes);
    if (error != ERROR_SUCCESS) return error;
    // A history in the first layout that is only read stays in it.
    if (hasTimes) {
        askTime.Bind(change, number);
        if (askTime.Next()) {
            found.first = askTime.Number(0);
            found.time = askTime.Number(1);
            if (askTime.Number(2) != Seal::Of(change, found.first, found.time)) return ERROR_FILE_CORRUPT;
        }
        askNextTime.Bind(change, number);
        if (askNextTime.Next() && !askNextTime.IsNull(0)) found.end = askNextTime.Number(0);
        if (askTime.Error() != ERROR_SUCCESS) return askTime.Error();
        if (askNextTime.Error() != ERROR_SUCCESS) return askNextTime.Error();
    }
    period = found;
    return ERROR_SUCCESS;
}

DWORD ObjectReader::FindTime(std::int64_t number, std::int64_t& time) {
    const bool isKnown = period.first <= number && number < period.end;
    const DWORD error = isKnown ? ERROR_SUCCESS : AskPeriod(number);
    time = period.time;
    return error;
}

DWORD ObjectReader::Read(const Statement& row, RecordedObject& object) {
    const std::int64_t folder = row.Number(1);
    const std::string name = row.Text(2);
    const bool isSealed =
        row.Number(7) == Seal::Of(change, row.Number(0), folder, std::string_view(name), row.Number(3),
                                  row.Number(4), row.Number(5), row.Number(6));
    DWORD error = isSealed && folder > 0 && IsBareName(name) ? FindFolder(folder) : ERROR_FILE_CORRUPT;
    if (error == ERROR_SUCCESS) error = FindTop(folderTop, object.top);
    if (error == ERROR_SUCCESS) error = FindDescriptor(row.Number(5), object.change.before);
    if (error == ERROR_SUCCESS) error = FindDescriptor(row.Number(6), object.change.after);
    if (error == ERROR_SUCCESS) error = FindTime(row.Number(0), object.time);
    if (error != ERROR_SUCCESS) return error;
    if (name.empty() && !path.empty()) return ERROR_FILE_CORRUPT;
    object.change.path.assign(path).append(path.empty() || name.empty() ? "" : "\\").append(name);
    object.change.isFolder = row.Number(3) != 0;
    object.change.fileNumber = static_cast<std::uint64_t>(row.Number(4));
    return ERROR_SUCCESS;
}

}  // namespace permora
