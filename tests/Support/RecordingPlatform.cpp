#include "Support/RecordingPlatform.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "Platform/Failure.h"

namespace vorlent {

namespace {

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '\r') {
      out += "\\r";
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\0') {
      out += "\\0";
    } else {
      out += c;
    }
  }
  return out + '"';
}

const char* Name(MessageIcon icon) {
  static constexpr const char* kNames[] = {"Information", "Question", "Exclamation", "Critical"};
  return kNames[static_cast<int>(icon)];
}

const char* Name(MessageButtons buttons) {
  return buttons == MessageButtons::Ok ? "Ok" : "YesNoCancel";
}

const char* Name(MessageAnswer answer) {
  static constexpr const char* kNames[] = {"Ok", "Yes", "No", "Cancel"};
  return kNames[static_cast<int>(answer)];
}

std::string Hex(std::uint32_t value) {
  char text[9];
  std::snprintf(text, sizeof text, "%08X", value);
  return text;
}

std::string Text(const DateTime& t) {
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", t.year, t.month, t.day, t.hour,
                t.minute, t.second, t.millisecond);
  return text;
}

template <class Value>
std::optional<Value> TakeFront(std::deque<Value>& script) {
  if (script.empty()) return std::nullopt;
  Value value = std::move(script.front());
  script.pop_front();
  return value;
}

}  // namespace

std::vector<std::string> RecordingPlatform::CallsOf(std::string_view member) const {
  const std::string begin = std::string(member) + "(";
  std::vector<std::string> found;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
               [&](const std::string& line) { return line.starts_with(begin); });
  return found;
}

FileDialogAnswer RecordingPlatform::Chosen(std::string_view path) {
  FileDialogAnswer answer;
  answer.chosen = true;
  answer.nameBuffer = std::string(path) + '\0';
  const std::size_t separator = path.rfind('\\');
  answer.fileNameOffset = static_cast<std::int16_t>(separator == std::string_view::npos ? 0 : separator + 1);
  return answer;
}

void RecordingPlatform::SetRegistryText(std::uint32_t hive, std::string_view key, std::string_view value,
                                        std::string_view text) {
  RegistryValue entry;
  entry.size = static_cast<std::uint32_t>(text.size() + 1);
  entry.bytes = std::string(text) + '\0';
  registry[{hive, {std::string(key), std::string(value)}}] = std::move(entry);
}

void RecordingPlatform::SetAppData(std::string_view folder) {
  SetRegistryText(0x80000001, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                  "AppData", folder);
}

void RecordingPlatform::AdvanceClock(std::int64_t milliseconds) {
  using namespace std::chrono;
  const sys_time<std::chrono::milliseconds> moment =
      sys_days(year(now.year) / now.month / now.day) + hours(now.hour) + minutes(now.minute) +
      seconds(now.second) + std::chrono::milliseconds(now.millisecond + milliseconds);
  const auto midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss time(moment - midnight);
  now.year = static_cast<int>(date.year());
  now.month = static_cast<int>(static_cast<unsigned>(date.month()));
  now.day = static_cast<int>(static_cast<unsigned>(date.day()));
  now.hour = static_cast<int>(time.hours().count());
  now.minute = static_cast<int>(time.minutes().count());
  now.second = static_cast<int>(time.seconds().count());
  now.millisecond = static_cast<int>(time.subseconds().count());
}

DateTime RecordingPlatform::Now() {
  const DateTime present = now;
  calls.push_back("Now() -> " + Text(present));
  if (millisecondsPerCall != 0) AdvanceClock(millisecondsPerCall);
  return present;
}

MessageAnswer RecordingPlatform::ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                                             MessageButtons buttons) {
  const MessageAnswer unscripted = buttons == MessageButtons::Ok ? MessageAnswer::Ok : MessageAnswer::Cancel;
  const MessageAnswer answer = TakeFront(messageAnswers).value_or(unscripted);
  calls.push_back("ShowMessage(" + Quoted(text) + "," + Quoted(title) + "," + Name(icon) + "," +
                  Name(buttons) + ") -> " + Name(answer));
  return answer;
}

FileDialogAnswer RecordingPlatform::ShowFileDialog(const FileDialogRequest& request) {
  fileDialogRequests.push_back(request);
  FileDialogAnswer answer = TakeFront(fileDialogAnswers).value_or(FileDialogAnswer());
  calls.push_back("ShowFileDialog(" + std::string(request.save ? "save" : "open") + "," +
                  Quoted(request.title) + "," + Quoted(request.initialFolder) + ") -> " +
                  (answer.chosen ? Quoted(answer.nameBuffer.c_str()) : "cancelled"));
  if (onFileDialog) onFileDialog(request);
  return answer;
}

void RecordingPlatform::SetPointer(bool busy) {
  calls.push_back(busy ? "SetPointer(busy)" : "SetPointer(default)");
}

void RecordingPlatform::YieldOnce() {
  calls.push_back("YieldOnce()");
  if (onYield) onYield();
}

void RecordingPlatform::Wait(std::uint32_t milliseconds) {
  calls.push_back("Wait(" + std::to_string(milliseconds) + ")");
  if (onWait) onWait(milliseconds);
}

std::optional<std::vector<ProcessEntry>> RecordingPlatform::Processes() {
  calls.push_back("Processes() -> " + (processes ? std::to_string(processes->size()) : "no snapshot"));
  return processes;
}

void RecordingPlatform::CloseWindows(std::uint32_t processId) {
  calls.push_back("CloseWindows(" + std::to_string(processId) + ")");
  if (onCloseWindows) onCloseWindows(processId);
}

void RecordingPlatform::Terminate(std::uint32_t processId) {
  calls.push_back("Terminate(" + std::to_string(processId) + ")");
  if (processes) std::erase_if(*processes, [&](const ProcessEntry& entry) { return entry.id == processId; });
}

int RecordingPlatform::DriveType(std::string_view root) {
  const char letter = root.empty() ? ' ' : static_cast<char>(root[0] & ~0x20);
  const auto drive = drives.find(letter);
  const int type = drive == drives.end() ? 1 : drive->second;
  calls.push_back("DriveType(" + Quoted(root) + ") -> " + std::to_string(type));
  return type;
}

std::optional<RegistryValue> RecordingPlatform::QueryRegistry(std::uint32_t hive, std::string_view key,
                                                              std::string_view value) {
  const auto entry = registry.find({hive, {std::string(key), std::string(value)}});
  const bool found = entry != registry.end();
  calls.push_back("QueryRegistry(" + Hex(hive) + "," + Quoted(key) + "," + Quoted(value) + ") -> " +
                  (found ? Quoted(entry->second.bytes.value_or("unreadable")) : "missing"));
  if (!found) return std::nullopt;
  return entry->second;
}

std::string RecordingPlatform::CurrentFolder() {
  calls.push_back("CurrentFolder() -> " + Quoted(currentFolder));
  return currentFolder;
}

void RecordingPlatform::SetCurrentFolder(std::string_view folder) {
  calls.push_back("SetCurrentFolder(" + Quoted(folder) + ")");
  if (folderExists && !folderExists(folder)) {
    throw Failure(ErrorNumber::PathNotFound, "no such folder: " + std::string(folder));
  }
  currentFolder = folder;
}

}  // namespace vorlent
