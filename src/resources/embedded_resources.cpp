#include "resources/embedded_resources.h"

// The assembler copies the file; PERMORA_RESOURCE_FILE is its path, set by the build.
asm(R"(
    .pushsection .rodata
    .balign 8
    .global permoraResourcesBegin
permoraResourcesBegin:
    .incbin ")" PERMORA_RESOURCE_FILE R"("
    .global permoraResourcesEnd
permoraResourcesEnd:
    .popsection
)");

extern "C" {
extern const std::byte permoraResourcesBegin[];
extern const std::byte permoraResourcesEnd[];
}

namespace permora {

std::span<const std::byte> EmbeddedResources() {
    return {permoraResourcesBegin, permoraResourcesEnd};
}

}  // namespace permora
