#include "Platform/Locale.h"

#include <windows.h>

#include <algorithm>

#include "Platform/Windows/System.h"

namespace vorlent::os {

char DecimalSign() {
  wchar_t sign[8] = {};
  const int size = GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, sign, 8);
  // The closing zero is counted.
  return size == 2 && sign[0] < 0x80 ? static_cast<char>(sign[0]) : '.';
}

// The system writes "de-DE".
std::string MessageLocale() {
  wchar_t name[LOCALE_NAME_MAX_LENGTH];
  const LCID language = MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT);
  const int size = LCIDToLocaleName(language, name, LOCALE_NAME_MAX_LENGTH, 0);
  if (size <= 1) return "C";
  std::string locale = ToUtf8({name, static_cast<std::size_t>(size) - 1}).value_or("C");
  std::replace(locale.begin(), locale.end(), '-', '_');
  return locale;
}

}  // namespace vorlent::os
