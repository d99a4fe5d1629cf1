#include "tests/end_to_end/secret_search.h"

#include "pass_interface/encryption.h"
#include "tests/support/temporary_directory.h"

namespace end_to_end {
namespace {

namespace fs = std::filesystem;

// The characters of Base64 that depend on the secret alone, when so many bytes of something else stand before it.
std::string Base64Core(const std::string& secret, std::size_t before) {
  const std::string bytes = std::string(before, '\0') + secret;
  const std::string text =
      pass_interface::IEncryption::Base64Encode(bytes.data(), static_cast<int>(bytes.size()), false);
  const std::size_t first = (before * 8 + 5) / 6;
  return text.substr(first, bytes.size() * 8 / 6 - first);
}

std::string Hex(const std::string& secret, const char* digits, bool isUrl) {
  std::string text;
  for (const char c : secret) {
    const auto byte = static_cast<unsigned char>(c);
    if (isUrl && (std::isalnum(byte) != 0 || c == '-' || c == '.' || c == '_' || c == '~')) {
      text += c;
      continue;
    }
    if (isUrl) text += '%';
    text += {digits[byte >> 4], digits[byte & 15]};
  }
  return text;
}

}  // namespace

SecretSearch::SecretSearch(const std::vector<std::string>& secrets) {
  constexpr char kLower[] = "0123456789abcdef";
  constexpr char kUpper[] = "0123456789ABCDEF";
  for (const std::string& secret : secrets) {
    const std::string name = Hex(secret, kUpper, true);
    forms.push_back({name, secret});
    for (std::size_t before : {0U, 1U, 2U}) forms.push_back({name + " in Base64", Base64Core(secret, before)});
    for (const char* digits : {kLower, kUpper}) {
      forms.push_back({name + " in hexadecimal", Hex(secret, digits, false)});
      forms.push_back({name + " in a URL", Hex(secret, digits, true)});
    }
  }
}

std::vector<std::string> SecretSearch::InText(const std::string& place, const std::string& text) const {
  std::vector<std::string> found;
  for (const Form& form : forms) {
    if (text.find(form.bytes) != std::string::npos) found.push_back(place + " holds " + form.name);
  }
  return found;
}

std::vector<std::string> SecretSearch::InFiles(const fs::path& root) const {
  std::vector<std::string> found;
  const auto search = [&](const fs::path& file) {
    const auto inFile = InText(file.filename().string(), tests::ReadFile(file));
    found.insert(found.end(), inFile.begin(), inFile.end());
  };
  if (fs::is_regular_file(root)) search(root);
  if (!fs::is_directory(root)) return found;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file()) search(entry.path());
  }
  return found;
}

}  // namespace end_to_end
