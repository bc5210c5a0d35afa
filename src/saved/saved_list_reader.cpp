#include "saved/saved_list_reader.h"

#include <utility>

#include "saved/icacls_reader.h"
#include "saved/own_form_reader.h"
#include "saved/saved_lines.h"

namespace permora {

DWORD SavedFileInput::Open(const std::string& path, SavedFileInput& input) {
    return SequentialFile::Open(path, input.file);
}

std::unique_ptr<SavedListReader> SavedListReader::Open(SavedInput& input, SavedFault& fault,
                                                       const nt::SddlAccounts& accounts) {
    constexpr std::string_view kByteOrderMark = "\xFF\xFE";
    constexpr std::size_t kExamined = 4096;
    SavedLines lines(input);
    std::string_view first;
    if (!lines.Peek(kExamined, first, fault)) return nullptr;
    // UTF-16 has zeros at the latest in the first line break; UTF-8 has none.
    const bool hasMark = first.starts_with(kByteOrderMark);
    const bool isWide = hasMark || first.find('\0') != first.npos;
    if (hasMark) lines.Skip(kByteOrderMark.size());
    if (isWide) return std::make_unique<IcaclsReader>(std::move(lines), accounts);
    auto reader = std::make_unique<OwnFormReader>(std::move(lines));
    if (!reader->ReadHead(fault)) return nullptr;
    return reader;
}

}  // namespace permora
