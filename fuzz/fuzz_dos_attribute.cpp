// Samba's record of file attributes, from a disk that anyone may have written: what is read can be written
// again.
#include <cstdint>
#include <span>

#include "fuzz/require.h"
#include "platform/linux/files/dos_attribute.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using permora::host::DosAttribute;
    const auto attribute = DosAttribute::FromBytes(std::span(data, size));
    if (!attribute) return 0;
    const auto written = attribute->ToBytes();
    const auto again = DosAttribute::FromBytes(written);
    permora::Require(again.has_value(), "what was written can be read");
    permora::Require(again->version == attribute->version && again->validFields == attribute->validFields &&
                         again->attributes == attribute->attributes,
                     "writing keeps version, fields and attributes");
    permora::Require(again->ToBytes() == written, "writing again changes nothing");
    return 0;
}
