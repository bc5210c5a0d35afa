// Our own text form of saved lists, read.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "saved/saved_lines.h"
#include "saved/saved_list_reader.h"
#include "saved/sha256.h"

namespace permora {

class OwnFormReader : public SavedListReader {
  public:
    explicit OwnFormReader(SavedLines text) : lines(std::move(text)) {}
    bool ReadHead(SavedFault& fault);

    const SavedHead& Head() const override { return head; }
    const SavedTop& Top() const override { return top; }
    std::size_t TopCount() const override { return tops; }
    bool Next(SavedObject& object, SavedFault& fault) override;
    bool IsComplete() const override { return hasEnded && !isIncomplete; }

  private:
    enum class Step { kObject, kOther, kEnd, kFault };

    bool TakeHeadLine(std::string_view word, std::string_view& rest);
    bool TakeParts(std::string_view words);
    Step TakeLine(std::string_view line, SavedObject& object);
    bool TakeTop(std::string_view written);
    bool TakeDescriptor(std::string_view rest, bool isSddl);
    bool TakeObject(SavedKind kind, std::string_view rest, SavedObject& object);
    bool TakeGap(SavedKind kind, std::string_view rest, SavedObject& object);
    bool TakePlace(SavedKind kind, std::string&& path);
    bool TakeEnd(std::string_view rest);
    bool Refuse(const char* reason);
    bool NextLine(std::string_view& line);

    SavedLines lines;
    SavedHead head;
    SavedTop top;
    std::size_t tops = 0;
    std::unordered_map<std::string, std::shared_ptr<const SavedDescriptor>> known;
    std::size_t knownBytes = 0;
    std::string lastPath;  // of the object before
    SavedKind lastKind = SavedKind::kFile;
    bool isFirstOfTop = true;
    bool isIncomplete = false;
    bool hasEnded = false;
    std::uint64_t objects = 0;
    Sha256 hash;
    SavedFault problem;
};

}  // namespace permora
