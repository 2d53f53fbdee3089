#include "Host/Com/Text.h"

#include <algorithm>
#include <new>

#include "Platform/CodePage.h"

namespace vorlent::com {

std::string Utf8Of(std::wstring_view wide) {
  const int units = static_cast<int>(wide.size());
  std::string utf8(wide.size() * 3, '\0');
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, utf8.data(),
                                       static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(size));
  return utf8;
}

std::wstring WideOfUtf8(std::string_view utf8) {
  std::wstring wide(utf8.size(), L'\0');
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(),
                                       static_cast<int>(wide.size()));
  wide.resize(static_cast<std::size_t>(size));
  return wide;
}

std::string TextOf(std::wstring_view wide) {
  if (HoldsUtf8()) return wide.empty() ? std::string() : Utf8Of(wide);
  std::string text(wide.size(), '\0');
  std::transform(wide.begin(), wide.end(), text.begin(),
                 [](wchar_t unit) { return static_cast<char>(codepage::FromCodePoint(unit).value_or('?')); });
  return text;
}

std::wstring WideOf(std::string_view text) {
  if (HoldsUtf8()) return text.empty() ? std::wstring() : WideOfUtf8(TextToUtf8(text));
  std::wstring wide(text.size(), L'\0');
  std::transform(text.begin(), text.end(), wide.begin(),
                 [](char byte) { return static_cast<wchar_t>(codepage::ToCodePoint(codepage::Code(byte))); });
  return wide;
}

std::string TextOf(const OLECHAR* text, UINT length) {
  return text == nullptr ? std::string() : TextOf(std::wstring_view(text, length));
}

BSTR NewBstr(std::string_view text) {
  const std::wstring wide = WideOf(text);
  BSTR const made = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (made == nullptr) throw std::bad_alloc();
  return made;
}

}  // namespace vorlent::com
