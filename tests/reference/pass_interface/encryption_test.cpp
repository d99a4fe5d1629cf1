#include "pass_interface/encryption.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using pass_interface::IEncryption;
using Bytes = std::vector<unsigned char>;

const Bytes kKey(32, 0x4b);
const Bytes kIv(16, 0x1f);

Bytes Plain(std::size_t size) {
  Bytes plain(size);
  for (std::size_t i = 0; i < size; ++i) plain[i] = static_cast<unsigned char>(i * 7);
  plain.reserve(size + 1);  // So that data() of an empty one is not null.
  return plain;
}

Bytes Encrypted(const Bytes& plain, const Bytes& key = kKey, const Bytes& iv = kIv) {
  Bytes output;
  EXPECT_NE(IEncryption::Aes256Encrypt(plain.data(), static_cast<int>(plain.size()), key.data(), iv.data(), output),
            -1);
  return output;
}

int Decrypt(const Bytes& sealed, Bytes& output, const Bytes& key = kKey, const Bytes& iv = kIv) {
  return IEncryption::Aes256Decrypt(sealed.data(), static_cast<int>(sealed.size()), key.data(), iv.data(), output);
}

TEST(EncryptionTest, EverySizeComesBackByteForByte) {
  for (std::size_t size = 0; size <= 100; ++size) {
    const Bytes plain = Plain(size);
    const Bytes sealed = Encrypted(plain);
    EXPECT_EQ(sealed.size(), (size / 16 + 1) * 16 + 32);
    Bytes opened;
    ASSERT_NE(Decrypt(sealed, opened), -1) << size;
    EXPECT_EQ(opened, plain) << size;
  }
}

TEST(EncryptionTest, EqualInputsGiveEqualOutputsAndOtherKeysOthers) {
  const Bytes plain = Plain(40);
  const std::set<Bytes> outputs = {Encrypted(plain), Encrypted(plain), Encrypted(plain, Bytes(32, 0x4c)),
                                   Encrypted(plain, kKey, Bytes(16, 0x20))};
  EXPECT_EQ(outputs.size(), 3U);
}

TEST(EncryptionTest, ARefusalLeavesTheOutputAlone) {
  const Bytes sealed = Encrypted(Plain(40));
  Bytes opened = {1, 2, 3};
  EXPECT_EQ(Decrypt(sealed, opened, Bytes(32, 0x4c)), -1);
  EXPECT_EQ(Decrypt(sealed, opened, kKey, Bytes(16, 0x20)), -1);
  EXPECT_EQ(opened, (Bytes{1, 2, 3}));
}

TEST(EncryptionTest, NullPointersAndNegativeLengthsAreRefused) {
  const Bytes sealed = Encrypted(Plain(40));
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

TEST(Base64Test, TextsAndTheirForms) {
  const struct {
    std::string bytes;
    const char* text;
  } rows[] = {{"f", "Zg=="},        {"fo", "Zm8="},          {"foo", "Zm9v"},
              {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="},   {"foobar", "Zm9vYmFy"},
              {"\xfb\xff", "+/8="}, {{"\0\0\0", 3}, "AAAA"}, {{"\0", 1}, "AA=="}};
  for (const auto& row : rows) {
    EXPECT_EQ(IEncryption::Base64Encode(row.bytes.data(), static_cast<int>(row.bytes.size()), false), row.text);
    EXPECT_EQ(Decoded(row.text), row.bytes) << row.text;
  }
  const std::string zeros(3000, '\0');
  EXPECT_EQ(IEncryption::Base64Encode(zeros.data(), 3000, false), std::string(4000, 'A')) << "stays on one line";
}

TEST(Base64Test, WhatIsNotCanonicalDecodesToNothing) {
  for (const char* text :
       {"",     "Z",    "Zg",     "Zg=",  "Zg===",    "====",     "Z===", "=Zg=",     "Zg=A",      "Zg==Zg==",
        "Zh==", "Zm9=", "Zm9v\n", " Zm9", "Zm9v    ", "    Zm9v", "Zm-_", "Zm9v!!!!", "Zm9vYg\n=", "Zm\0v"}) {
    EXPECT_EQ(Decoded(text), "") << text;
  }
  EXPECT_EQ(IEncryption::Base64Decode("Zm9v", -4, false), "");
  EXPECT_EQ(IEncryption::Base64Decode(nullptr, 4, false), "");
  EXPECT_EQ(IEncryption::Base64Encode(nullptr, 4, false), "");
  EXPECT_EQ(IEncryption::Base64Encode("foo", -1, false), "");
}

}  // namespace
