#include "session/sha256.h"

#include <gtest/gtest.h>

#include "app/command_fixture.h"

namespace vornel::session {
namespace {

class Sha256 : public test::CommandFixture {
  protected:
    std::string Of(const std::string& content) const {
        return FileSha256(Write("content", content));
    }
};

// The examples that NIST publishes with FIPS 180.
TEST_F(Sha256, PublishedExamples) {
    EXPECT_EQ(Of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    // Longer than the pieces in which a file is read.
    EXPECT_EQ(Of(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST_F(Sha256, AFileThatCannotBeReadHasNone) {
    EXPECT_EQ(FileSha256(Path("none")), "");
}

}  // namespace
}  // namespace vornel::session
