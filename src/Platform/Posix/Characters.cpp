#include "Platform/Characters.h"

#include <locale.h>
#include <wchar.h>
#include <wctype.h>

namespace vorlent::os {

namespace {

// Unicode's own rules, whatever the user's language. The C library has them built in.
locale_t UnicodeLocale() {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return unicode;
}

// Has the calling thread follow Unicode's rules as long as it lives.
class UnicodeScope {
 public:
  UnicodeScope() : before_(uselocale(UnicodeLocale())) {}
  ~UnicodeScope() { uselocale(before_); }
  UnicodeScope(const UnicodeScope&) = delete;
  UnicodeScope& operator=(const UnicodeScope&) = delete;

 private:
  locale_t before_;
};

}  // namespace

char32_t LowerCaseOf(char32_t codePoint) {
  if (UnicodeLocale() == nullptr) return codePoint;
  return static_cast<char32_t>(towlower_l(static_cast<wint_t>(codePoint), UnicodeLocale()));
}

char32_t UpperCaseOf(char32_t codePoint) {
  if (UnicodeLocale() == nullptr) return codePoint;
  return static_cast<char32_t>(towupper_l(static_cast<wint_t>(codePoint), UnicodeLocale()));
}

std::size_t ColumnsOf(char32_t codePoint) {
  if (UnicodeLocale() == nullptr) return 1;
  const UnicodeScope scope;
  const int columns = wcwidth(static_cast<wchar_t>(codePoint));
  return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

}  // namespace vorlent::os
