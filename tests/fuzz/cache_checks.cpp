#include <string>

#include "pass_interface/encryption.h"
#include "session/instance_info_codec.h"
#include "session/session_cipher.h"
#include "tests/fuzz/checks.h"

namespace fuzz {
namespace {

using namespace qv_data_interface;
using pass_interface::IEncryption;

std::string Open(const std::string& row) {
  return DecryptSessionText(row.data(), static_cast<std::int32_t>(row.size()));
}

std::string Seal(std::string_view plain) {
  return EncryptSessionText(plain.data(), static_cast<std::int32_t>(plain.size()));
}

}  // namespace

bool CheckCacheJson(std::string_view input) {
  pass_interface::InstanceInfo info;
  if (ParseInstanceInfo(std::string(input).c_str(), info) != 0) return false;
  Require(info.code == -1 && info.requestTag.empty() && info.message.empty(), "a cached record has no header");
  std::string written, again;
  InstanceInfoToJson(info, written);
  pass_interface::InstanceInfo reread;
  Require(ParseInstanceInfo(written.c_str(), reread) == 0, "what was written can be read");
  // Two records are equal when their texts are.
  InstanceInfoToJson(reread, again);
  Require(again == written, "what is written is read back equal");
  return true;
}

bool CheckCacheRow(std::string_view input) {
  const std::string row(input);
  const std::string opened = Open(row);
  if (!opened.empty()) {
    Require(Seal(opened) == row, "only what this cipher wrote is opened");
    CheckCacheJson(opened);
  }

  const std::string sealed = Seal(input);
  Require(Open(sealed) == input, "a row gives back what it was made of");
  // One bit of its bytes, chosen by the input, is enough to have it refused.
  std::string bytes = IEncryption::Base64Decode(sealed.data(), static_cast<int>(sealed.size()), false);
  const std::size_t bit = std::hash<std::string_view>()(input) % (bytes.size() * 8);
  bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
  const std::string changed = IEncryption::Base64Encode(bytes.data(), static_cast<int>(bytes.size()), false);
  Require(Open(changed).empty(), "a row with a bit flipped is refused");
  return !opened.empty();
}

}  // namespace fuzz
