#include "Platform/Charsets.h"

#include <algorithm>
#include <iterator>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// Text that is called ASCII and is none may be UTF-8 as well, which is taken for Windows-1252 where it isn't.
constexpr std::string_view kUtf8 = "UTF-8";
constexpr std::string_view kPage = "Windows-1252";
constexpr std::string_view kJapaneseMail = "ISO-2022-JP-3";  // with half-width kana

// The charset that a mail means by a name, as the converters of all systems know it. Mails tell the smaller
// of two charsets and use the larger, as their programs do; and they have names for charsets that browsers
// know, but no converter.
struct Alias {
  std::string_view told;
  std::string_view meant;
};
constexpr Alias kAliases[] = {{"gb2312", "GB18030"},
                              {"gb_2312", "GB18030"},
                              {"gb_2312-80", "GB18030"},
                              {"csgb2312", "GB18030"},
                              {"csiso58gb231280", "GB18030"},
                              {"gb18030-2022", "GB18030"},
                              {"iso-ir-58", "GB18030"},
                              {"chinese", "GB18030"},
                              {"gbk", "GB18030"},
                              {"x-gbk", "GB18030"},
                              {"cp936", "GB18030"},
                              {"windows-936", "GB18030"},
                              {"x-x-big5", "BIG5"},
                              {"cn-big5", "BIG5"},
                              {"big5-eten", "BIG5"},
                              {"csbig5", "BIG5"},
                              {"shift_jis", "CP932"},
                              {"shift-jis", "CP932"},
                              {"sjis", "CP932"},
                              {"x-sjis", "CP932"},
                              {"ms_kanji", "CP932"},
                              {"windows-31j", "CP932"},
                              {"x-ms-cp932", "CP932"},
                              {"csshiftjis", "CP932"},
                              {"ms932", "CP932"},
                              {"x-euc-jp", "EUC-JP"},
                              {"cp51932", "EUC-JP"},
                              {"iso-2022-jp", kJapaneseMail},
                              {"cp50220", kJapaneseMail},
                              {"cp50221", kJapaneseMail},
                              {"csiso2022jp", kJapaneseMail},
                              {"euc-kr", "CP949"},
                              {"ks_c_5601-1987", "CP949"},
                              {"ks_c_5601-1989", "CP949"},
                              {"ksc5601", "CP949"},
                              {"ksc_5601", "CP949"},
                              {"korean", "CP949"},
                              {"cseuckr", "CP949"},
                              {"windows-949", "CP949"},
                              {"x-windows-949", "CP949"},
                              {"csksc56011987", "CP949"},
                              {"iso-ir-149", "CP949"},
                              {"ks_c_5601", "CP949"},
                              {"iso-8859-8-i", "ISO-8859-8"},
                              {"logical", "ISO-8859-8"},
                              {"visual", "ISO-8859-8"},
                              {"csiso88598e", "ISO-8859-8"},
                              {"csiso88598i", "ISO-8859-8"},
                              {"iso-8859-8-e", "ISO-8859-8"},
                              {"iso-8859-9", "CP1254"},
                              {"latin5", "CP1254"},
                              {"l5", "CP1254"},
                              {"csisolatin5", "CP1254"},
                              {"iso-ir-148", "CP1254"},
                              {"iso8859-9", "CP1254"},
                              {"iso88599", "CP1254"},
                              {"iso_8859-9", "CP1254"},
                              {"iso_8859-9:1989", "CP1254"},
                              {"iso-8859-11", "CP874"},
                              {"iso8859-11", "CP874"},
                              {"iso885911", "CP874"},
                              {"tis-620", "CP874"},
                              {"dos-874", "CP874"},
                              {"x-cp1250", "CP1250"},
                              {"x-cp1251", "CP1251"},
                              {"win-1251", "CP1251"},
                              {"cp-1251", "CP1251"},
                              {"ansi-1251", "CP1251"},
                              {"win1251", "CP1251"},
                              {"windows1251", "CP1251"},
                              {"x-cp1253", "CP1253"},
                              {"x-cp1254", "CP1254"},
                              {"x-cp1255", "CP1255"},
                              {"x-cp1256", "CP1256"},
                              {"x-cp1257", "CP1257"},
                              {"x-cp1258", "CP1258"},
                              {"koi", "KOI8-R"},
                              {"koi8", "KOI8-R"},
                              {"koi8_r", "KOI8-R"},
                              {"koi8-ru", "KOI8-U"},
                              {"x-iso-8859-2", "ISO-8859-2"},
                              {"csiso88596e", "ISO-8859-6"},
                              {"csiso88596i", "ISO-8859-6"},
                              {"iso-8859-6-e", "ISO-8859-6"},
                              {"iso-8859-6-i", "ISO-8859-6"},
                              {"sun_eu_greek", "ISO-8859-7"},
                              {"csisolatin9", "ISO-8859-15"},
                              {"l9", "ISO-8859-15"},
                              {"cp-850", "CP850"},
                              {"x-mac-roman", "MACINTOSH"},
                              {"x-mac-cyrillic", "MAC-CYRILLIC"},
                              {"x-mac-ukrainian", "MAC-CYRILLIC"},
                              {"x-mac-ce", "MAC-CENTRALEUROPE"},
                              {"unicode-1-1-utf-8", kUtf8},
                              {"x-unicode20utf8", kUtf8},
                              {"unicode11utf8", kUtf8},
                              {"unicode20utf8", kUtf8},
                              {"unicodefffe", "UTF-16BE"},
                              {"unicodefeff", "UTF-16LE"},
                              {"iso-10646-ucs-2", "UTF-16LE"},
                              {"utf-8-sig", kUtf8},
                              {"utf8mb4", kUtf8},
                              {"us-ascii", kUtf8},
                              {"ascii", kUtf8},
                              {"ansi_x3.4-1968", kUtf8},
                              {"x-cp1252", kPage},
                              {"cp1252", kPage},
                              {"iso-8859-1", kPage},
                              {"iso8859-1", kPage},
                              {"iso_8859-1", kPage},
                              {"iso88591", kPage},
                              {"windows-28591", kPage},
                              {"cp819", kPage},
                              {"ibm819", kPage},
                              {"csisolatin1", kPage},
                              {"iso-ir-100", kPage},
                              {"iso_8859-1:1987", kPage},
                              {"l1", kPage},
                              {"latin1", kPage},
                              {"latin-1", kPage}};

std::string_view MeantBy(std::string_view charset) {
  const auto* const alias =
      std::ranges::find_if(kAliases, [&](const Alias& each) { return EqualNoCase(each.told, charset); });
  return alias == std::end(kAliases) ? charset : alias->meant;
}

}  // namespace

std::string FromCharset(std::string_view bytes, std::string_view charset) {
  if (!HoldsUtf8()) return std::string(bytes);
  // Nearly all text tells none, or this one.
  if (charset.empty() || EqualNoCase(charset, kUtf8)) return TextToUtf8(bytes);
  const std::string_view meant = MeantBy(charset);
  if (meant == kUtf8) return TextToUtf8(bytes);
  if (EqualNoCase(meant, kPage)) return codepage::ToUtf8(bytes);
  return os::CharsetToUtf8(bytes, std::string(meant)).value_or(TextToUtf8(bytes));
}

}  // namespace vorlent
