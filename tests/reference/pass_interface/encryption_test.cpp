#include "pass_interface/encryption.h"

#include <string>
#include <utility>
#include <vector>

#include "tests/support/transcribed.h"

namespace {

using pass_interface::IEncryption;
using Bytes = std::vector<unsigned char>;

const Bytes kKey(32, 0x4b), kOtherKey(32, 0x4c), kIv(16, 0x1f), kOtherIv(16, 0x20);

Bytes Plain(std::size_t size) {
  Bytes plain(size);
  for (std::size_t i = 0; i < size; ++i) plain[i] = static_cast<unsigned char>(i * 7);
  plain.reserve(size + 1);  // So that data() of an empty one is not null.
  return plain;
}

// Of either direction; with another result than success, what stood in the output before.
Bytes Convert(decltype(&IEncryption::Aes256Encrypt) operation, const Bytes& input, const Bytes& key = kKey,
              const Bytes& iv = kIv) {
  Bytes output = {1, 2, 3};
  const int result = operation(input.data(), static_cast<int>(input.size()), key.data(), iv.data(), output);
  EXPECT_EQ(result == -1, output == (Bytes{1, 2, 3}));
  return output;
}

TEST(EncryptionTest, EverySizeComesBackByteForByte) {
  for (std::size_t size = 0; size <= 100; ++size) {
    const Bytes sealed = Convert(IEncryption::Aes256Encrypt, Plain(size));
    EXPECT_EQ(sealed.size(), (size / 16 + 1) * 16 + 32);
    EXPECT_EQ(Convert(IEncryption::Aes256Decrypt, sealed), Plain(size)) << size;
  }
}

// That no changed byte passes is tried on cache rows.
TEST(EncryptionTest, EqualInputsGiveEqualOutputsAndAnotherKeyOrVectorOthersWhichTheFirstRefuses) {
  const Bytes plain = Plain(40), sealed = Convert(IEncryption::Aes256Encrypt, plain);
  EXPECT_EQ(Convert(IEncryption::Aes256Encrypt, plain), sealed);
  for (const auto& [key, iv] : {std::pair(kOtherKey, kIv), std::pair(kKey, kOtherIv)}) {
    EXPECT_NE(Convert(IEncryption::Aes256Encrypt, plain, key, iv), sealed);
    EXPECT_EQ(Convert(IEncryption::Aes256Decrypt, sealed, key, iv), (Bytes{1, 2, 3}));
  }
}

TEST(EncryptionTest, NullPointersAndNegativeLengthsAreRefused) {
  const Bytes sealed = Convert(IEncryption::Aes256Encrypt, Plain(40));
  const int length = static_cast<int>(sealed.size());
  Bytes output;
  for (const auto operation : {&IEncryption::Aes256Encrypt, &IEncryption::Aes256Decrypt}) {
    EXPECT_EQ(operation(nullptr, length, kKey.data(), kIv.data(), output), -1);
    EXPECT_EQ(operation(sealed.data(), length, nullptr, kIv.data(), output), -1);
    EXPECT_EQ(operation(sealed.data(), length, kKey.data(), nullptr, output), -1);
    EXPECT_EQ(operation(sealed.data(), -1, kKey.data(), kIv.data(), output), -1);
  }
  EXPECT_TRUE(output.empty());
}

std::string Decoded(const std::string& text) {
  return IEncryption::Base64Decode(text.data(), static_cast<int>(text.size()), false);
}

std::string Encoded(const std::string& bytes) {
  return IEncryption::Base64Encode(bytes.data(), static_cast<int>(bytes.size()), false);
}

using Base64 = tests::Transcribed<>;

TEST_F(Base64, OnlyCanonicalTextIsDecodedAndComesBackWhenItIsEncoded) {
  ForEachCase([](const std::string& text) {
    const std::string bytes = Decoded(text);
    EXPECT_TRUE(bytes.empty() || Encoded(bytes) == text) << text;
    return testing::PrintToString(bytes);
  });
  EXPECT_EQ(Encoded(std::string(3000, '\0')), std::string(4000, 'A')) << "stays on one line";
  for (const char* text : {"", "Zm9v\n", " Zm9", "Zm9v    ", "    Zm9v", "Zm9vYg\n=", "Zm\0v"}) {
    EXPECT_EQ(Decoded(text), "") << text;
  }
  EXPECT_EQ(IEncryption::Base64Decode("Zm9v", -4, false), "");
  EXPECT_EQ(IEncryption::Base64Decode(nullptr, 4, false), "");
  EXPECT_EQ(IEncryption::Base64Encode(nullptr, 4, false), "");
  EXPECT_EQ(IEncryption::Base64Encode("foo", -1, false), "");
}

}  // namespace
