// Saved lists in our own form: what is accepted is written again with the same meaning.
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/saved_texts.h"
#include "saved/saved_path.h"
#include "saved/sha256.h"

namespace permora {
namespace {

// The hash would keep the fuzzer from everything behind it, so the input's end is made to fit.
std::string Sealed(std::string text) {
    const std::size_t place = text.rfind("sha256 ");
    const std::size_t end = text.rfind("\nend ");
    if (place == text.npos || end == text.npos || place < end) return text;
    Sha256 hash;
    hash.Add(std::string_view(text).substr(0, end + 1));
    return text.substr(0, place) + "sha256 " + hash.Digest() + '\n';
}

struct Top {
    SavedTop top;
    std::vector<SavedObject> objects;
};

// Nothing when the text is refused.
bool ReadAll(std::string_view text, SavedHead& head, std::vector<Top>& tops) {
    FuzzInput input(text);
    SavedFault fault;
    const auto reader = SavedListReader::Open(input, fault);
    Require(reader || !fault.reason.empty(), "a refused text has a reason");
    if (!reader) return false;
    SavedObject object;
    while (reader->Next(object, fault)) {
        if (reader->TopCount() > tops.size()) tops.push_back({reader->Top(), {}});
        Require(object.path.empty() || IsPathBelow(object.path), "a path leads below the top");
        std::vector<SavedObject>& objects = tops.back().objects;
        Require(reader->Head().form != SavedForm::kPermora || objects.empty() ||
                    object.kind == SavedKind::kUnlisted || ComesBefore(objects.back().path, object.path),
                "paths ascend");
        objects.push_back(object);
    }
    head = reader->Head();
    return fault.reason.empty();
}

}  // namespace
}  // namespace permora

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    const std::string text = Sealed(std::string(reinterpret_cast<const char*>(data), size));
    SavedHead head;
    std::vector<Top> tops;
    // The other form has a target of its own.
    if (!ReadAll(text, head, tops) || head.form != SavedForm::kPermora) return 0;

    FuzzOutput output;
    const auto writer = SavedListWriter::Make(SavedForm::kPermora, output);
    Require(writer->Begin(head) == ERROR_SUCCESS, "a head that was read can be written");
    for (const Top& each : tops) {
        Require(writer->BeginTop(each.top) == ERROR_SUCCESS, "a top that was read can be written");
        for (const SavedObject& object : each.objects) {
            const DWORD error = object.descriptor
                                    ? writer->Add(object.path, object.kind, object.descriptor->bytes)
                                    : writer->AddGap(object.path, object.kind, object.error);
            Require(error == ERROR_SUCCESS, "an object that was read can be written");
        }
    }
    Require(writer->End() == ERROR_SUCCESS, "the end can be written");
    SavedHead headAgain;
    std::vector<Top> again;
    Require(ReadAll(output.text, headAgain, again), "what was written is read");
    Require(again.size() == tops.size(), "all tops are there again");
    for (std::size_t i = 0; i < tops.size(); ++i) {
        Require(again[i].top.path == tops[i].top.path && again[i].objects.size() == tops[i].objects.size(),
                "all objects are there again");
        for (std::size_t j = 0; j < tops[i].objects.size(); ++j) {
            const SavedObject& one = tops[i].objects[j];
            const SavedObject& other = again[i].objects[j];
            Require(one.path == other.path && one.kind == other.kind && one.error == other.error &&
                        !one.descriptor == !other.descriptor &&
                        (!one.descriptor || one.descriptor->bytes == other.descriptor->bytes),
                    "each object is the same again");
        }
    }
    return 0;
}
