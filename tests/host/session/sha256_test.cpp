#include "session/sha256.h"

#include <gtest/gtest.h>

namespace vornel::session {
namespace {

std::string Of(const std::string& text) {
    Sha256 sum;
    sum.Add(text);
    return sum.Hex();
}

// The examples that NIST publishes with FIPS 180.
TEST(Sha256, PublishedExamples) {
    EXPECT_EQ(Of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(Of(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, PiecesGiveTheSameAsTheWhole) {
    const std::string text(200, 'x');
    for (const std::size_t cut : {1UL, 55UL, 56UL, 63UL, 64UL, 65UL, 128UL}) {
        Sha256 sum;
        sum.Add(text.substr(0, cut));
        sum.Add(text.substr(cut));
        EXPECT_EQ(sum.Hex(), Of(text)) << cut;
    }
}

}  // namespace
}  // namespace vornel::session
