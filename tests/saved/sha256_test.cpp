#include "saved/sha256.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

// The examples of FIPS 180 and their lengths around the end of a block, as sha256sum computes them.
TEST(Sha256, HashesAsEverybodyElseDoes) {
    const struct {
        std::string text;
        const char* digest;
    } rows[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
        {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
        {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& row : rows) {
        Sha256 whole;
        whole.Add(row.text);
        EXPECT_EQ(whole.Digest(), row.digest);
        Sha256 pieces;
        for (std::string_view rest = row.text; !rest.empty();
             rest.remove_prefix(std::min<std::size_t>(rest.size(), 7)))
            pieces.Add(rest.substr(0, 7));
        EXPECT_EQ(pieces.Digest(), row.digest);
    }
}

}  // namespace
}  // namespace permora
