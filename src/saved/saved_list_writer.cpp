#include "saved/saved_list_writer.h"

#include "saved/icacls_writer.h"
#include "saved/own_form_writer.h"

namespace permora {

std::unique_ptr<SavedListWriter> SavedListWriter::Make(SavedForm form, SavedOutput& output) {
    if (form == SavedForm::kIcacls) return std::make_unique<IcaclsWriter>(output);
    return std::make_unique<OwnFormWriter>(output);
}

}  // namespace permora
