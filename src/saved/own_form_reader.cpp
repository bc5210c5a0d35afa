#include "saved/own_form_reader.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/ascii.h"
#include "platform/nt/sddl.h"
#include "saved/base64.h"
#include "saved/own_form.h"
#include "saved/saved_path.h"

namespace permora {
namespace {

constexpr const char* kNoSuchLine = "there is no such line in this form";
constexpr const char* kCutOff = "the text was cut off: its last line is missing";

bool TakeNumber(std::string_view text, std::uint64_t& number) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && stop == text.data() + text.size() && (text == "0" || text.front() != '0');
}

// "2026-11-26T08:02:11Z"
bool IsTime(std::string_view text) {
    constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";
    return std::equal(text.begin(), text.end(), kPattern.begin(), kPattern.end(), [](char one, char pattern) {
        return pattern == '0' ? one >= '0' && one <= '9' : one == pattern;
    });
}

bool IsId(std::string_view text) {
    constexpr std::size_t kLongest = 64;
    return !text.empty() && text.size() <= kLongest && std::all_of(text.begin(), text.end(), [](char digit) {
        return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
    });
}

SECURITY_INFORMATION PartsIn(const nt::SecurityDescriptor& descriptor) {
    const bool hasSacl = (descriptor.control & nt::kSaclPresent) != 0 || !descriptor.saclBytes.empty();
    return (descriptor.owner ? OWNER_SECURITY_INFORMATION : 0U) |
           (descriptor.group ? GROUP_SECURITY_INFORMATION : 0U) |
           (descriptor.daclState != nt::DaclState::kAbsent ? DACL_SECURITY_INFORMATION : 0U) |
           (hasSacl ? SACL_SECURITY_INFORMATION : 0U);
}

bool CanHoldOthers(SavedKind kind) {
    return kind == SavedKind::kFolder || kind == SavedKind::kUnread || kind == SavedKind::kUnlisted;
}

// Of a descriptor in SDDL or base64; nothing when it is none.
std::shared_ptr<const SavedDescriptor> DescriptorFrom(std::string_view text, bool isSddl) {
    auto made = std::make_shared<SavedDescriptor>();
    if (isSddl) {
        std::optional<nt::SecurityDescriptor> read = nt::FromSddl(text);
        if (!read || !read->AppendTo(made->bytes)) return nullptr;
    } else {
        std::optional<std::vector<std::uint8_t>> bytes = FromBase64(text);
        if (!bytes) return nullptr;
        made->bytes = std::move(*bytes);
    }
    // What is written again is the same, also the bits that follow the parts.
    std::optional<nt::SecurityDescriptor> value = nt::SecurityDescriptor::FromBytes(made->bytes);
    if (!value) return nullptr;
    made->value = std::move(*value);
    return made;
}

}  // namespace

bool OwnFormReader::Refuse(const char* reason) {
    problem = {lines.Number(), reason};
    return false;
}

// False at the end of the text too.
bool OwnFormReader::NextLine(std::string_view& line) {
    if (!lines.Next(line, problem)) return false;
    if (line.ends_with('\r')) return Refuse("the ends of the lines were changed: there are carriage returns");
    if (line.starts_with(own_form::kEnd)) return true;  // the hash stands there
    hash.Add(line);
    hash.Add("\n");
    return true;
}

bool OwnFormReader::TakeHeadLine(std::string_view word, std::string_view& rest) {
    if (!NextLine(rest)) return problem.reason.empty() ? Refuse(kCutOff) : false;
    return TakeUntil(' ', rest) == word ? true : Refuse("a line of the head is missing");
}

bool OwnFormReader::TakeParts(std::string_view words) {
    for (const auto& [part, word] : own_form::kPartWords) {
        std::string_view rest = words;
        if (TakeUntil(' ', rest) != word) continue;
        head.parts |= part;
        words = rest;
    }
    return words.empty() && head.parts != 0 ? true : Refuse("the parts that were saved are not understood");
}

bool OwnFormReader::ReadHead(SavedFault& fault) {
    std::string_view rest;
    bool isRead = false;
    if (!NextLine(rest) || TakeUntil(' ', rest) != own_form::kName) {
        if (problem.reason.empty()) Refuse("this is no text of saved lists");
    } else if (rest != own_form::kVersion) {
        Refuse("a newer version of this program wrote the text");
    } else if (TakeHeadLine(own_form::kSaved, rest)) {
        head.time = rest;
        if (!IsTime(rest))
            Refuse("the time is not understood");
        else
            isRead = TakeHeadLine(own_form::kParts, rest) && TakeParts(rest);
    }
    if (!isRead) fault = problem;
    return isRead;
}

bool OwnFormReader::Next(SavedObject& object, SavedFault& fault) {
    std::string_view line;
    SavedObject found;
    while (problem.reason.empty() && !hasEnded) {
        if (!NextLine(line)) {
            if (problem.reason.empty()) Refuse(kCutOff);
            break;
        }
        const Step step = TakeLine(line, found);
        if (step == Step::kFault || step == Step::kEnd) break;
        if (step == Step::kOther) continue;
        object = std::move(found);
        return true;
    }
    fault = problem;
    return false;
}

OwnFormReader::Step OwnFormReader::TakeLine(std::string_view line, SavedObject& object) {
    const auto other = [](bool isTaken) { return isTaken ? Step::kOther : Step::kFault; };
    const std::string_view word = TakeUntil(' ', line);
    if (word == own_form::kEnd) return TakeEnd(line) ? Step::kEnd : Step::kFault;
    if (word == own_form::kTop) return other(TakeTop(line));
    if (tops == 0) return other(Refuse("a line before the first top"));
    if (word == own_form::kList) return other(TakeDescriptor(line, true));
    if (word == own_form::kList64) return other(TakeDescriptor(line, false));
    if (word == own_form::kForget && line.empty()) {
        known.clear();
        knownBytes = 0;
        return Step::kOther;
    }
    const auto kind = std::find_if(own_form::kKindWords.begin(), own_form::kKindWords.end(),
                                   [&](const auto& row) { return row.second == word; });
    if (kind == own_form::kKindWords.end()) return other(Refuse(kNoSuchLine));
    const bool isTaken = kind->first == SavedKind::kUnread || kind->first == SavedKind::kUnlisted ||
                                 kind->first == SavedKind::kMounted
                             ? TakeGap(kind->first, line, object)
                             : TakeObject(kind->first, line, object);
    return isTaken ? Step::kObject : Step::kFault;
}

bool OwnFormReader::TakeTop(std::string_view written) {
    if (tops != 0 && isFirstOfTop) return Refuse("the top before this one has no objects");
    std::optional<std::string> path = TopFromWritten(written);
    if (!path) return Refuse("this is no absolute path");
    std::string_view rest;
    if (!TakeHeadLine(own_form::kVolume, rest)) return false;
    std::optional<std::string> volume = TextFromWritten(rest);
    if (!volume) return Refuse("the volume is not understood");
    top = {std::move(*path), std::move(*volume)};
    ++tops;
    isFirstOfTop = true;
    lastPath.clear();
    return true;
}

bool OwnFormReader::TakeDescriptor(std::string_view rest, bool isSddl) {
    const std::string_view id = TakeUntil(' ', rest);
    if (!IsId(id)) return Refuse("this is no name of a list");
    if (known.contains(std::string(id))) return Refuse("a list of this name came before");
    std::shared_ptr<const SavedDescriptor> descriptor = DescriptorFrom(rest, isSddl);
    if (!descriptor) return Refuse("the list is not understood");
    if ((PartsIn(descriptor->value) & ~head.parts) != 0)
        return Refuse("the list has a part that was not saved");
    knownBytes += own_form::KnownBytesOf(descriptor->bytes.size());
    if (knownBytes > own_form::kMostKnownBytes)
        return Refuse("there are too many lists before a line \"forget\"");
    known.emplace(id, std::move(descriptor));
    return true;
}

// Checks the place of a path in the order of objects.
bool OwnFormReader::TakePlace(SavedKind kind, std::string&& path) {
    if (kind == SavedKind::kUnlisted) {
        if (isFirstOfTop || lastKind == SavedKind::kUnlisted || !CanHoldOthers(lastKind) || path != lastPath)
            return Refuse("the folder does not come right before this line");
        lastKind = kind;
        return true;
    }
    if (isFirstOfTop != path.empty()) return Refuse("a top begins with itself, and has itself once");
    if (!isFirstOfTop) {
        if (path == lastPath) return Refuse("the object came before");
        if (!ComesBefore(lastPath, path)) return Refuse("the objects are not in their order");
        const std::size_t end = path.rfind('\\');
        const std::string_view folder = std::string_view(path).substr(0, end == path.npos ? 0 : end);
        const bool isInLast = folder == lastPath && CanHoldOthers(lastKind);
        if (!isInLast && !IsBelow(lastPath, folder))
            return Refuse("the folder of the object did not come before");
    }
    isFirstOfTop = false;
    lastPath = std::move(path);
    lastKind = kind;
    return true;
}

bool OwnFormReader::TakeObject(SavedKind kind, std::string_view rest, SavedObject& object) {
    const auto found = known.find(std::string(TakeUntil(' ', rest)));
    if (found == known.end()) return Refuse("the list of the object did not come before");
    std::optional<std::string> path = PathFromWritten(rest);
    if (!path) return Refuse("this is no path below the top");
    object = {*path, kind, found->second, ERROR_SUCCESS};
    ++objects;
    return TakePlace(kind, std::move(*path));
}

bool OwnFormReader::TakeGap(SavedKind kind, std::string_view rest, SavedObject& object) {
    std::uint64_t code = ERROR_SUCCESS;
    if (kind != SavedKind::kMounted) {
        isIncomplete = true;
        if (!TakeNumber(TakeUntil(' ', rest), code) || code == ERROR_SUCCESS || code > 0xFFFFFFFF)
            return Refuse("this is no error code");
    }
    std::optional<std::string> path = PathFromWritten(rest);
    if (!path) return Refuse("this is no path below the top");
    object = {*path, kind, nullptr, static_cast<DWORD>(code)};
    ++objects;
    return TakePlace(kind, std::move(*path));
}

bool OwnFormReader::TakeEnd(std::string_view rest) {
    if (isFirstOfTop) return Refuse("the last top has no objects");
    const std::string_view state = TakeUntil(' ', rest);
    // More may be missing than lines can name.
    if (state == own_form::kIncomplete)
        isIncomplete = true;
    else if (state != own_form::kComplete || isIncomplete)
        return Refuse("the end does not say rightly whether all could be read");
    std::uint64_t count = 0;
    if (!TakeNumber(TakeUntil(' ', rest), count) || count != objects)
        return Refuse("the number of objects is another one: lines are missing or were added");
    if (TakeUntil(' ', rest) != own_form::kSha256 || rest != hash.Digest())
        return Refuse("the hash of the text is another one: it was changed");
    std::string_view line;
    if (lines.Next(line, problem)) return Refuse("something comes after the end");
    hasEnded = problem.reason.empty();
    return hasEnded;
}

}  // namespace permora
