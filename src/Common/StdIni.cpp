#include "Common/StdIni.h"

#include <optional>

#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"

namespace vorlent {

namespace {

constexpr char kComment = '\'';

// The file in one piece.
std::string ReadText(std::string_view path) {
  os::File file = os::File::Open(path, os::File::Mode::Read);
  std::string text(static_cast<std::size_t>(file.Length()), '\0');
  text.resize(file.Read(text.data(), text.size()));
  return text;
}

struct Entry {
  std::string_view key;
  std::string_view value;
};

// The entry that a line is, nothing for a comment or plain text.
std::optional<Entry> ParseEntry(std::string_view line) {
  const std::size_t sign = line.find('=');
  if (line.starts_with(kComment) || sign == std::string_view::npos) return std::nullopt;
  return Entry{line.substr(0, sign), line.substr(sign + 1)};
}

// Calls `take` with the value of each entry of a key, letter case apart, as long as it returns true.
template <class Take>
void ForEachValue(std::string_view body, std::string_view key, Take&& take) {
  while (!body.empty()) {
    const auto entry = ParseEntry(CutLine(body));
    if (entry && EqualNoCase(entry->key, key) && !take(entry->value)) return;
  }
}

void AppendLine(std::string& text, std::string_view line) {
  text.append(line).append(kLineEnd);
}

}  // namespace

void StdIni::Clear() {
  count_ = 0;
  isDirty_ = false;
}

void StdIni::Load(std::string_view file) {
  Clear();
  fileName_ = file;
  if (FileExists(file)) LoadString(ReadText(file));
}

void StdIni::LoadString(std::string_view ini) {
  Clear();
  while (!ini.empty()) {
    const std::string_view line = CutLine(ini);
    if (line.starts_with('[') && line.ends_with(']')) {
      ++count_;
      At(count_) = {Trim(line.substr(1, line.size() - 2)), ""};
      continue;
    }
    if (count_ == 0 && !Trim(line).empty()) At(++count_) = {};
    if (count_ > 0) AppendLine(At(count_).body, line);
  }
  for (std::int32_t pos = 1; pos <= count_; ++pos) {
    std::string& body = At(pos).body;
    body = TrimBlank(body);
    if (!body.empty()) body += kLineEnd;
  }
}

void StdIni::Save(std::string& file) {
  if (file.empty()) file = fileName_;
  if (file.empty() || !isDirty_) return;
  TextWriter writer(file, os::File::Mode::Create);
  for (std::int32_t pos = 1; pos <= count_; ++pos) {
    const Section& section = At(pos);
    if (!section.name.empty()) writer.WriteLine("[" + section.name + "]");
    writer.WriteLine(section.body);
  }
  writer.Close();
}

std::string StdIni::GetSectionValue(std::string_view sch) const {
  const std::int32_t pos = GetSectionNr(sch);
  return pos > 0 ? At(pos).body : "";
}

void StdIni::SetSectionValue(std::string_view sch, std::string_view wrt) {
  isDirty_ = true;
  std::int32_t pos = GetSectionNr(sch);
  if (pos == 0) {
    pos = ++count_;
    At(pos).name = sch;
  }
  At(pos).body = wrt;
}

std::string StdIni::GetString(std::string_view sch, std::string_view key) const {
  std::string found;
  ForEachValue(GetSectionValue(sch), key, [&](std::string_view value) {
    found = value;
    return false;
  });
  return found;
}

std::string StdIni::GetStringMulti(std::string_view sch, std::string_view key) const {
  std::string found;
  ForEachValue(GetSectionValue(sch), key, [&](std::string_view value) {
    AppendLine(found, value);
    return true;
  });
  return found;
}

void StdIni::SetString(std::string_view sch, std::string_view key, std::string_view wrt) {
  isDirty_ = true;
  const std::string oldBody = GetSectionValue(sch);
  const std::string changed = std::string(key).append("=").append(wrt);
  std::string body;
  std::string_view rest = oldBody;
  while (!rest.empty()) {
    const std::string_view line = CutToken(rest, kLineEnd);
    const auto entry = ParseEntry(line);
    // Letter case counts here, other than in a search: a key in another case is another entry.
    if (entry && entry->key == key) {
      AppendLine(body, changed);
      SetSectionValue(sch, body.append(rest));
      return;
    }
    AppendLine(body, line);
  }
  AppendLine(body, changed);
  SetSectionValue(sch, body);
}

bool StdIni::ExistSection(std::string_view sch) const {
  return GetSectionNr(sch) >= 1;
}

std::int32_t StdIni::GetSectionNr(std::string_view sch) const {
  for (std::int32_t pos = 1; pos <= count_; ++pos) {
    if (EqualNoCase(At(pos).name, sch)) return pos;
  }
  return 0;
}

void StdIni::DeleteSection(std::string_view sch) {
  const std::int32_t found = GetSectionNr(sch);
  if (found == 0) return;
  --count_;
  for (std::int32_t pos = found; pos <= count_; ++pos)
    At(pos) = At(pos + 1);
  isDirty_ = true;
}

std::string StdIni::GetSection(std::int32_t pos) const {
  return At(pos).name;
}

void StdIni::SetSection(std::int32_t pos, std::string_view sch) {
  At(pos).name = sch;
  if (pos > count_) count_ = pos;
  isDirty_ = true;
}

StdIni::Section& StdIni::At(std::int32_t pos) {
  return const_cast<Section&>(std::as_const(*this).At(pos));
}

const StdIni::Section& StdIni::At(std::int32_t pos) const {
  if (pos < 1 || pos > kMaxSections) {
    throw Failure(ErrorNumber::SubscriptOutOfRange, "no section at position " + std::to_string(pos));
  }
  return sections_[static_cast<std::size_t>(pos - 1)];
}

}  // namespace vorlent
