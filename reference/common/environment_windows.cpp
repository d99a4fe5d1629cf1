#include <windows.h>

#include "reference/common/environment.h"

namespace reference {
namespace {

std::wstring WideEnvironmentText(const wchar_t* name) {
  std::wstring text(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  // Another thread may have made it longer since.
  const DWORD length = ::GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size()));
  text.resize(length < text.size() ? length : 0);
  return text;
}

}  // namespace

// getenv would give the text in the system's code page.
std::string EnvironmentText(const char* name) {
  const std::wstring text = WideEnvironmentText(std::filesystem::path(name).c_str());
  std::string utf8(text.size() * 3, '\0');
  const int length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(),
                                           static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(length));
  return utf8;
}

std::filesystem::path UserDataRoot() {
  return WideEnvironmentText(L"LOCALAPPDATA");
}

}  // namespace reference
