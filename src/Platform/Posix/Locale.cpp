#include "Platform/Locale.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <string>
#include <utility>

namespace vorlent::os {

namespace {

// The name of the user's locale of a category: the first of these variables that is set.
std::string LocaleOf(const char* category) {
  for (const char* name : {"LC_ALL", category, "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return "C";
}

// The process's own locale stays, since code that formats for files relies on it.
char LoadDecimalSign(const std::string& name) {
  if (name == "C" || name == "POSIX") return '.';
  const locale_t numbers = newlocale(LC_NUMERIC_MASK, name.c_str(), nullptr);
  if (numbers == nullptr) return '.';
  const std::string sign = nl_langinfo_l(RADIXCHAR, numbers);
  freelocale(numbers);
  return sign.size() == 1 ? sign[0] : '.';
}

}  // namespace

char DecimalSign() {
  // Kept, as a locale is loaded from files; by its name, so that a change is seen.
  static std::string known = "C";
  static char sign = '.';
  std::string name = LocaleOf("LC_NUMERIC");
  if (name != known) {
    sign = LoadDecimalSign(name);
    known = std::move(name);
  }
  return sign;
}

std::string MessageLocale() {
  return LocaleOf("LC_MESSAGES");
}

}  // namespace vorlent::os
