#include "Standalone/FittingName.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

constexpr std::size_t kLongestExtension = 16;
constexpr std::string_view kUnnamed = "unnamed";

bool MayStand(char c) {
  constexpr std::string_view kForbidden = "\\/:*?\"<>|\x7F";
  return codepage::Code(c) >= 32 && kForbidden.find(c) == std::string_view::npos;
}

// Windows drops blanks and dots at a name's end, and a blank at its beginning is seen by nobody.
std::string WithoutBlankEnds(std::string name) {
  const std::size_t start = name.find_first_not_of(' ');
  if (start == std::string::npos) return {};
  return name.substr(start, name.find_last_not_of(" .") + 1 - start);
}

// Whether Windows takes the name for that of a device, which it does with any extension.
bool NamesDevice(std::string_view name) {
  constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
  constexpr std::array<std::string_view, 13> kNumbers = {"0", "1", "2", "3", "4", "5", "6",
                                                         "7", "8", "9", "¹", "²", "³"};
  std::string_view stem = name.substr(0, name.find('.'));
  stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
  const auto isStem = [&](std::string_view device) { return EqualNoCase(stem, device); };
  const std::string_view port = stem.substr(0, 3);
  const bool isPort = (EqualNoCase(port, "COM") || EqualNoCase(port, "LPT")) &&
                      std::ranges::find(kNumbers, stem.substr(3)) != kNumbers.end();
  return isPort || std::ranges::any_of(kDevices, isStem);
}

// The first bytes of UTF-8 text, without a character that would be cut in two.
std::string_view FirstBytes(std::string_view text, std::size_t count) {
  if (text.size() <= count) return text;
  while (count > 0 && (codepage::Code(text[count]) & 0xC0) == 0x80)
    --count;
  return text.substr(0, count);
}

std::string Shortened(const std::string& name, std::size_t longest) {
  if (name.size() <= longest) return name;
  std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0 || name.size() - dot > kLongestExtension) dot = name.size();
  const std::string_view all = name;
  const std::string_view extension = all.substr(dot);
  const std::string stem(FirstBytes(all.substr(0, dot), longest - extension.size()));
  return WithoutBlankEnds(stem) + std::string(extension);
}

}  // namespace

std::string DecodeFileName(std::string_view encoded) {
  std::string name;
  name.reserve(encoded.size());
  for (std::size_t at = 0; at < encoded.size(); ++at) {
    unsigned char code = 0;
    const std::string_view digits = encoded.substr(at, 3).substr(1);
    const char* end = digits.data() + digits.size();
    const bool isCode =
        encoded[at] == '%' && digits.size() == 2 && std::from_chars(digits.data(), end, code, 16).ptr == end;
    name += isCode ? static_cast<char>(code) : encoded[at];
    if (isCode) at += digits.size();
  }
  return name;
}

std::string FittingName(std::string_view name, std::size_t longest) {
  std::string fitting(name);
  std::ranges::replace_if(
      fitting, [](char c) { return !MayStand(c); }, '_');
  fitting = WithoutBlankEnds(std::move(fitting));
  if (fitting.empty()) fitting = kUnnamed;
  if (NamesDevice(fitting)) fitting.insert(0, "_");
  return Shortened(fitting, longest);
}

std::string FittingAsciiName(std::string_view name, std::size_t longest) {
  std::string ascii;
  for (const char c : name) {
    if (codepage::Code(c) < 0x80) {
      ascii += c;
    } else if (!ascii.ends_with('_')) {
      ascii += '_';
    }
  }
  return FittingName(ascii, longest);
}

bool DistinctNames::Reserve(std::string_view name) {
  return used_.insert(LowerCase(ExactTextFromUtf8(name).value_or(std::string(name)))).second;
}

std::string DistinctNames::Take(std::string_view name) {
  const std::string wanted = FittingName(name, longest_);
  if (Reserve(wanted)) return wanted;
  for (int& count = lastCount_.try_emplace(wanted, 1).first->second;;) {
    const std::string mark = "(" + std::to_string(++count) + ") ";
    const std::string counted = mark + FittingName(wanted, longest_ - mark.size());
    if (Reserve(counted)) return counted;
  }
}

}  // namespace vorlent
