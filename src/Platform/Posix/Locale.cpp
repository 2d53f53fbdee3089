#include "Platform/Locale.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <string>

namespace vorlent::os {

namespace {

// What the user's locale for numbers is told by, so that a change is seen.
std::string LocaleSettings() {
  std::string settings;
  for (const char* name : {"LC_ALL", "LC_NUMERIC", "LANG", "LOCPATH"}) {
    const char* value = std::getenv(name);
    settings += value == nullptr ? "" : value;
    settings += '\n';
  }
  return settings;
}

// The process's own locale stays, since code that formats for files relies on it.
char LoadDecimalSign() {
  const locale_t numbers = newlocale(LC_NUMERIC_MASK, "", nullptr);
  if (numbers == nullptr) return '.';
  const std::string sign = nl_langinfo_l(RADIXCHAR, numbers);
  freelocale(numbers);
  return sign.size() == 1 ? sign[0] : '.';
}

}  // namespace

char DecimalSign() {
  static std::string settings;
  static char sign = '.';
  std::string present = LocaleSettings();
  if (present != settings) {
    sign = LoadDecimalSign();
    settings = std::move(present);
  }
  return sign;
}

}  // namespace vorlent::os
