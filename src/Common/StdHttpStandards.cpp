#include "Common/StdHttpStandards.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Platform/Charsets.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// 0 to 15, -1 for what is no hexadecimal digit.
int ValueOfHexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// Makes of each mark and the two digits after it a byte; a mark without them stays.
void DecodeMarkedBytes(std::string_view text, char mark, std::string& out) {
  out.resize(text.size());
  char* end = out.data();
  while (!text.empty()) {
    const std::size_t stretch = std::min(text.find(mark), text.size());
    end = std::copy_n(text.begin(), stretch, end);
    text.remove_prefix(stretch);
    if (text.empty()) break;
    const int high = text.size() < 3 ? -1 : ValueOfHexDigit(text[1]);
    const int low = text.size() < 3 ? -1 : ValueOfHexDigit(text[2]);
    const bool isByte = high >= 0 && low >= 0;
    *end++ = isByte ? static_cast<char>(high * 16 + low) : mark;
    text.remove_prefix(isByte ? 3 : 1);
  }
  out.resize(static_cast<std::size_t>(end - out.data()));
}

bool IsBlankText(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

// --- Transfer encodings

void Base64Reader::Take(char c, std::string& out) {
  const int value = Base64Value({&c, 1});
  if (c == '=') bitCount_ = 0;  // the padding of a group, which ends here
  if (value < 0) return;
  bits_ = bits_ << 6 | static_cast<std::uint32_t>(value);
  bitCount_ += 6;
  if (bitCount_ < 8) return;
  bitCount_ -= 8;
  out += static_cast<char>(bits_ >> bitCount_ & 0xFF);
}

void DecodeQuotedBytes(std::string_view text, std::string& out) {
  DecodeMarkedBytes(text, '=', out);
}

std::string WithoutComments(std::string_view value) {
  if (value.find('(') == std::string_view::npos) return TrimBlank(value);
  std::string plain;
  int depth = 0;
  bool isQuoted = false;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '"' && depth == 0) isQuoted = !isQuoted;
    if (c == '(' && !isQuoted) ++depth;
    if (depth == 0) plain += c;
    if (c == ')' && depth > 0) --depth;
    if (c != '\\' || (depth == 0 && !isQuoted) || i + 1 == value.size()) continue;
    ++i;
    if (depth == 0) plain += value[i];
  }
  return TrimBlank(plain);
}

// RFC 2045: token := 1*<any (US-ASCII) CHAR except SPACE, CTLs, or tspecials>
bool IsToken(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return c > ' ' && c < '\x7F' && std::string_view("()<>@,;:\\\"/[]?=").find(c) == std::string_view::npos;
  });
}

bool IsContentType(std::string_view type) {
  const std::size_t slash = type.find('/');
  return slash != std::string_view::npos && IsToken(type.substr(0, slash)) && IsToken(type.substr(slash + 1));
}

std::string ContentTypeByStandard(std::string_view value) {
  const std::string plain = WithoutComments(value);
  std::string_view rest(plain);
  rest = rest.substr(0, rest.find(';'));
  std::string type = LowerCase(TrimBlank(CutToken(rest, "/"))) + "/";
  type += LowerCase(TrimBlank(rest));
  return IsContentType(type) ? type : "";
}

// --- Encoded words

namespace {

struct HeaderWord {
  std::string_view charset;
  std::string bytes;
};

// Finds the encoded words of a text, one after the other.
class WordFinder {
 public:
  explicit WordFinder(std::string_view text) : rest_(text) {}

  // The next word, and the text before it; nothing after the last, and all that is left.
  std::optional<HeaderWord> Next(std::string_view& before);

 private:
  std::optional<HeaderWord> WordAt(std::size_t begin, std::size_t& end);

  std::string_view rest_;
  bool hasEnds_ = true;  // "?=" was found whenever it was looked for
};

std::optional<HeaderWord> WordFinder::Next(std::string_view& before) {
  std::size_t end = 0;
  for (std::size_t begin = rest_.find("=?"); begin != std::string_view::npos;
       begin = rest_.find("=?", begin + 2)) {
    std::optional<HeaderWord> word = WordAt(begin, end);
    if (!word) continue;
    before = rest_.substr(0, begin);
    rest_.remove_prefix(end);
    return word;
  }
  before = std::exchange(rest_, {});
  return std::nullopt;
}

std::string BytesOfBase64(std::string_view data) {
  std::string bytes;
  Base64Reader reader;
  for (const char c : data)
    reader.Take(c, bytes);
  return bytes;
}

std::string BytesOfQ(std::string data) {
  std::ranges::replace(data, '_', ' ');
  std::string bytes;
  DecodeQuotedBytes(data, bytes);
  return bytes;
}

// RFC 2047: "=?" charset "?" encoding "?" data "?="; RFC 2231: charset*language
std::optional<HeaderWord> WordFinder::WordAt(std::size_t begin, std::size_t& end) {
  const std::size_t charset = begin + 2;
  const std::size_t encoding = rest_.find_first_of("? \t\r\n", charset) + 1;
  if (!hasEnds_ || encoding == 0 || encoding + 1 >= rest_.size()) return std::nullopt;
  if (rest_[encoding - 1] != '?' || encoding == charset + 1 || rest_[encoding + 1] != '?')
    return std::nullopt;
  const bool isBase64 = rest_[encoding] == 'B' || rest_[encoding] == 'b';
  if (!isBase64 && rest_[encoding] != 'Q' && rest_[encoding] != 'q') return std::nullopt;
  const std::size_t data = encoding + 2;
  const std::size_t dataEnd = rest_.find("?=", data);
  hasEnds_ = dataEnd != std::string_view::npos;
  if (!hasEnds_) return std::nullopt;
  end = dataEnd + 2;
  const std::string_view name = rest_.substr(charset, encoding - 1 - charset);
  const std::string_view text = rest_.substr(data, dataEnd - data);
  HeaderWord word = {.charset = name.substr(0, name.find('*')),
                     .bytes = isBase64 ? BytesOfBase64(text) : BytesOfQ(std::string(text))};
  // Text that isn't encoded at all is to be read.
  if (word.bytes.empty() && !text.empty()) return std::nullopt;
  return word;
}

}  // namespace

std::string DecodeWordsByStandard(std::string_view value) {
  std::string out;
  WordFinder finder(value);
  HeaderWord run;  // adjacent words of one charset
  bool isRun = false;
  const auto endRun = [&] {
    if (isRun) out += FromCharset(run.bytes, run.charset);
  };
  std::string_view before;
  for (std::optional<HeaderWord> word = finder.Next(before); word; word = finder.Next(before)) {
    const bool isAdjacent = isRun && IsBlankText(before);
    if (isAdjacent && EqualNoCase(run.charset, word->charset)) {
      run.bytes += word->bytes;
      continue;
    }
    endRun();
    if (!isAdjacent) out += FromCharset(before, "");
    run = *std::move(word);
    isRun = true;
  }
  endRun();
  out += FromCharset(before, "");
  std::erase_if(out, [](char c) { return c == '\r' || c == '\n'; });
  return out;
}

// --- Parameters

namespace {

// Cuts the text before the next ";" that isn't in quotes.
std::string_view CutParameter(std::string_view& value) {
  std::size_t end = 0;
  for (bool isQuoted = false; end < value.size() && (isQuoted || value[end] != ';'); ++end) {
    if (isQuoted && value[end] == '\\') {
      ++end;
    } else if (value[end] == '"') {
      isQuoted = !isQuoted;
    }
  }
  const std::string_view parameter = value.substr(0, std::min(end, value.size()));
  value.remove_prefix(std::min(end + 1, value.size()));
  return parameter;
}

// Cuts the value that comes before the parameters, up to a ";" that isn't in a comment.
void CutMainValue(std::string_view& value) {
  int depth = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '(') ++depth;
    if (value[i] == ')' && depth > 0) --depth;
    if (value[i] == '\\' && depth > 0) ++i;
    if (i >= value.size() || value[i] != ';' || depth > 0) continue;
    value.remove_prefix(i + 1);
    return;
  }
  // A comment without its end is none.
  const bool isOpen = depth > 0;
  isOpen ? void(CutToken(value, ";")) : value.remove_prefix(value.size());
}

// The text of a value in quotes; of one without, the value itself. A backslash that hides neither a quote nor
// a backslash is one of a Windows path that was never quoted.
std::string Unquoted(std::string value) {
  if (!value.starts_with('"')) return value;
  std::string text;
  for (std::size_t i = 1; i < value.size() && value[i] != '"'; ++i) {
    if (value[i] == '\\' && i + 1 < value.size() && (value[i + 1] == '"' || value[i + 1] == '\\')) ++i;
    text += value[i];
  }
  return text;
}

// RFC 2231: charset'language'text. Gives the charset, "" if there is none.
std::string_view CutCharset(std::string_view& text) {
  const std::size_t language = text.find('\'');
  const std::size_t start = language == std::string_view::npos ? language : text.find('\'', language + 1);
  if (start == std::string_view::npos) return {};
  const std::string_view charset = text.substr(0, language);
  text.remove_prefix(start + 1);
  return charset;
}

// One parameter in all of its forms. Of several of a form the first one counts.
class ParameterForms {
 public:
  explicit ParameterForms(std::string_view name) : name_(name) {}

  void Take(std::string_view key, std::string value);
  std::string Value() const;

 private:
  struct Section {
    std::string value;
    bool isExtended = false;
  };
  using Sections = std::map<std::uint32_t, Section>;

  static std::string Joined(const Sections& sections);

  std::string_view name_;
  Sections plain_;  // one of number 0, if any; so are those of the next
  Sections extended_;
  Sections numbered_;
};

// name, name*, name*0, name*0*; of other keys that begin so nothing comes.
void ParameterForms::Take(std::string_view key, std::string value) {
  key.remove_prefix(name_.size());
  if (key.empty()) {
    plain_.try_emplace(0, Section{std::move(value), false});
    return;
  }
  if (!key.starts_with('*')) return;
  key.remove_prefix(1);
  if (key.empty()) {
    extended_.try_emplace(0, Section{std::move(value), true});
    return;
  }
  const bool isExtended = key.ends_with('*');
  if (isExtended) key.remove_suffix(1);
  constexpr std::size_t kMostDigits = 6;
  const bool isNumber = std::ranges::all_of(key, [](char c) { return c >= '0' && c <= '9'; });
  if (key.empty() || key.size() > kMostDigits || !isNumber) return;
  const auto number = static_cast<std::uint32_t>(std::stoul(std::string(key)));
  numbered_.try_emplace(number, Section{std::move(value), isExtended});
}

std::string ParameterForms::Value() const {
  return Joined(!extended_.empty() ? extended_ : !numbered_.empty() ? numbered_ : plain_);
}

// The first section tells the charset, and each for itself whether it has codes.
std::string ParameterForms::Joined(const Sections& sections) {
  std::string bytes;
  std::string decoded;
  std::optional<std::string_view> charset;
  for (const auto& [number, section] : sections) {
    std::string_view text = section.value;
    if (section.isExtended) {
      const std::string_view told = bytes.empty() ? CutCharset(text) : "";
      if (!charset) charset = told;
      DecodeMarkedBytes(text, '%', decoded);
      text = decoded;
    }
    bytes += text;
  }
  return charset ? FromCharset(bytes, *charset) : DecodeWordsByStandard(bytes);
}

}  // namespace

std::string HeaderParamByStandard(std::string_view value, std::string_view name) {
  // Names of files are often written without quotes, and brackets are part of them.
  const bool mayHaveComments = name != "filename" && name != "name";
  ParameterForms forms(name);
  CutMainValue(value);
  while (!value.empty()) {
    std::string_view text = CutParameter(value);
    const std::string key = LowerCase(TrimBlank(CutToken(text, "=")));
    if (!key.starts_with(name)) continue;
    forms.Take(key, Unquoted(mayHaveComments ? WithoutComments(text) : TrimBlank(text)));
  }
  return forms.Value();
}

}  // namespace vorlent
