#include "app/saved_list_notice.h"

#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/remembered_object.h"
#include "platform/visible_text.h"
#include "saved/saved_list_reader.h"

namespace permora {

// Reads no further than to the first object: whoever acts on the list checks it to its end.
std::string SavedListNotice(const std::string& argument) {
    std::string path;
    SavedFileInput input;
    SavedFault fault;
    if (FullPathOf(PathFromArgument(argument.c_str()), path) != ERROR_SUCCESS) return {};
    // Opening a pipe waits, and opening a device may do something.
    const RememberedObject object(nullptr, path);
    if (object.Error() != ERROR_SUCCESS || object.Kind() != FolderEntryKind::kFile ||
        SavedFileInput::Open(path, input) != ERROR_SUCCESS)
        return {};
    const auto reader = SavedListReader::Open(input, fault);
    SavedObject first;
    if (!reader || reader->Head().form != SavedForm::kPermora || !reader->Next(first, fault)) return {};
    return VisibleText(path) + "\nis a saved list of " + VisibleText(reader->Top().path) +
           " and what is in it, from " + VisibleText(reader->Head().time) +
           ".\n\nIn a terminal, \"permora-cli compare\" with this file shows what has changed since, and "
           "\"permora-cli restore\" brings it back.";
}

}  // namespace permora
