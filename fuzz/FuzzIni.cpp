// Ini documents from any bytes: read, asked, changed, saved, and read again.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Common/StdIni.h"
#include "Common/StdModul.h"
#include "Fuzz.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"

namespace vorlent {
namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

// One file for all runs, removed at the end.
const std::string& FilePath() {
  static const struct File {
    std::string path = "C:\\tmp\\vorlent-fuzz-ini-" + std::to_string(getpid());
    ~File() { KillFile(path); }
  } file;
  return file.path;
}

std::vector<std::string> Names(const StdIni& ini) {
  std::vector<std::string> names;
  for (std::int32_t pos = 1; pos <= ini.Count(); ++pos)
    names.push_back(ini.GetSection(pos));
  return names;
}

// The document as Save writes it.
std::string Saved(StdIni ini) {
  std::string path = FilePath();
  if (ini.Count() == 0) return "";
  ini.SetSection(1, ini.GetSection(1));  // nothing changes but the mark
  ini.Save(path);
  os::File file = os::File::Open(path, os::File::Mode::Read);
  std::string bytes(file.Length(), '\0');
  file.Read(bytes.data(), bytes.size());
  return bytes;
}

// What is saved reads as the same document, unless a section has no name to be saved under: after another it
// becomes a part of that, and in front a first line that lost its indentation may have become a header.
void CheckSaving(const StdIni& ini) {
  const auto names = Names(ini);
  for (std::size_t i = 1; i < names.size(); ++i) {
    if (names[i].empty()) return;
  }
  if (!names.empty() && names[0].empty() && ini.GetSectionValue("").starts_with('[')) return;
  const std::string saved = Saved(ini);
  StdIni again;
  if (!Swallow([&] { again.LoadString(saved); })) return;
  if (Names(again) == names) Check(Saved(again) == saved);
}

// A value that was set is among those of its key, and every other section stays.
void CheckSetting(StdIni ini, const std::string& section, const std::string& key, const std::string& value) {
  const bool isEntry = !key.starts_with('\'') && (key + value).find_first_of("\r\n") == std::string::npos &&
                       key.find('=') == std::string::npos;
  const auto names = Names(ini);
  if (!Swallow([&] { ini.SetString(section, key, value); })) return;
  Check(ini.isDirty() && ini.ExistSection(section));
  if (isEntry)
    Check(("\r\n" + ini.GetStringMulti(section, key)).find("\r\n" + value + "\r\n") != std::string::npos);
  auto namesAfter = Names(ini);
  Check(namesAfter.size() - names.size() <= 1);
  namesAfter.resize(names.size());
  Check(namesAfter == names);
}

void Run(std::string_view input) {
  // The first three lines ask and change, the rest is the document.
  const std::string section(CutLine(input));
  const std::string key(CutLine(input));
  const std::string value(CutLine(input));
  StdIni ini;
  if (!Swallow([&] { ini.LoadString(input); })) return;
  const std::string all = ini.GetStringMulti(section, key);
  Check(all.starts_with(ini.GetString(section, key)));
  Check(!ini.isDirty() && ini.ExistSection(section) == (ini.GetSectionNr(section) > 0));
  CheckSaving(ini);
  CheckSetting(ini, section, key, value);
  ini.DeleteSection(section);
  CheckSaving(ini);
}

}  // namespace
}  // namespace vorlent

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vorlent::fuzz::UnderBothRules([&] { vorlent::Run(vorlent::fuzz::Text(data, size)); });
  return 0;
}
