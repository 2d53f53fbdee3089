#include "Platform/Charsets.h"

#include <algorithm>
#include <array>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// Mails tell the smaller of two charsets and use the larger, as their programs do.
struct Superset {
  std::string_view told;
  std::string_view used;
};
constexpr std::array<Superset, 7> kSupersets = {{{"gb2312", "GB18030"},
                                                 {"gbk", "GB18030"},
                                                 {"shift_jis", "CP932"},
                                                 {"x-sjis", "CP932"},
                                                 {"euc-kr", "CP949"},
                                                 {"ks_c_5601-1987", "CP949"},
                                                 {"iso-8859-8-i", "ISO-8859-8"}}};

constexpr std::array<std::string_view, 7> kPageNames = {"windows-1252", "cp1252",   "iso-8859-1", "iso8859-1",
                                                        "latin1",       "us-ascii", "ascii"};

template <class Names>
bool Holds(const Names& names, std::string_view name) {
  return std::ranges::any_of(names, [&](std::string_view each) { return EqualNoCase(each, name); });
}

std::string NameForConverter(std::string_view charset) {
  for (const Superset& superset : kSupersets) {
    if (EqualNoCase(superset.told, charset)) return std::string(superset.used);
  }
  return std::string(charset);
}

}  // namespace

std::string FromCharset(std::string_view bytes, std::string_view charset) {
  if (!HoldsUtf8()) return std::string(bytes);
  if (charset.empty() || EqualNoCase(charset, "utf-8")) return TextToUtf8(bytes);
  if (Holds(kPageNames, charset)) return codepage::ToUtf8(bytes);
  return os::CharsetToUtf8(bytes, NameForConverter(charset)).value_or(TextToUtf8(bytes));
}

}  // namespace vorlent
