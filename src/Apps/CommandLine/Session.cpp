#include "Apps/CommandLine/Session.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

#include "Apps/CommandLine/System.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Host/Connector.h"
#include "Host/RecordKeys.h"
#include "Platform/AtEnd.h"
#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"
#include "Platform/Rules.h"
#include "Platform/Settings.h"
#include "Platform/StandardPaths.h"
#include "Platform/WorkFolder.h"
#include "Standalone/Phrases.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::app {

namespace {

// All schemes, as a sentence names them.
std::string SchemeList() {
  std::string list;
  for (const Scheme* scheme : kSchemes) {
    if (!list.empty()) list += scheme == kSchemes.back() ? InWords(Phrase::Or) : ", ";
    list += scheme->prefix;
  }
  return list;
}

void ApplyDrives(const std::vector<std::string>& drives) {
  for (const std::string& drive : drives) {
    if (drive.size() < 3 || drive[1] != '=') {
      throw AppError(ExitCode::Usage, InWords(Phrase::DriveForm, {drive}));
    }
    const std::string folder = drive.substr(2);
    if (!IsFolder(folder)) {
      throw AppError(ExitCode::Usage, InWords(Phrase::NoSuchFolderOfOption, {"--drive " + drive, folder}));
    }
    os::SetDrive(drive[0], folder);
  }
}

// The registered component knows no other rules than those of Windows.
Rules RulesOf(const GlobalOptions& options) {
  if (options.com && options.rules == "today")
    throw AppError(ExitCode::Usage, InWords(Phrase::ComKnowsTheRulesOfWindows));
  return options.com || options.rules == "windows" ? Rules::Windows() : Rules::Today();
}

// The address of what lies at a path of this system; "" if the text isn't taken for one.
std::string AddressOfPath(const std::string& text) {
  std::string_view place = text;
  for (const std::string_view mark : {"/-", "/*"}) {
    if (place.ends_with(mark)) place.remove_suffix(mark.size());
  }
  std::error_code ignored;
  const bool isPath = os::StandardPath(text).has_root_directory() ||
                      std::filesystem::exists(os::StandardPath(place), ignored);
  if (!isPath || !TakesPathsAsAddresses()) return {};
  std::string path = ComponentPath(NormalPath(text));
  if (path.substr(1, 2) != ":\\") return {};
  path.erase(1, 1);
  ReplaceText(path, "\\", "/");
  return std::string(kThunderbirdScheme.prefix) + "./" + path;
}

// The last segment of a browsed address, without its closing mark.
std::string_view LastSegment(std::string_view address) {
  if (address.ends_with('*')) address.remove_suffix(1);
  if (address.ends_with('/')) address.remove_suffix(1);
  return address.substr(address.rfind('/') + 1);
}

}  // namespace

Session::Session(const GlobalOptions& options)
    : options_(options), console_(std::make_shared<Console>(options.verbose, options.databaseLog)) {
  ApplyDrives(options.drives);
  if (!options.appData.empty()) {
    if (!IsFolder(options.appData)) {
      throw AppError(ExitCode::Usage, InWords(Phrase::NoSuchFolderOfOption, {"--appdata", options.appData}));
    }
    os::SetAppDataFolder(options.appData);
  }
  ChooseRules(RulesOf(options));
  host_ = std::make_shared<StandaloneHost>(*console_);
  host_->Global().SetLogEnabled(options.verbose || options.databaseLog);
  installed_.emplace(std::make_shared<ConsolePlatform>(*console_), host_);
  signals_.emplace(host_->Global().CancelFlag());
  os::RemoveAbandonedWorkFolders();
  if (options.com) registered_ = UseRegisteredComponent(host_, {options.appData, options.drives});
}

std::string Session::Address(const std::string& utf8) {
  const Scheme* const scheme = SchemeOf(utf8);
  if (scheme == nullptr) {
    if (std::string address = AddressOfPath(utf8); !address.empty()) return address;
    throw AppError(ExitCode::Usage, InWords(Phrase::NoAddress, {utf8}),
                   InWords(Phrase::AddressForm, {SchemeList()}));
  }
  if (IsAscii(utf8)) return utf8;
  std::string rest = utf8.substr(scheme->prefix.size());
  std::string address(scheme->prefix);
  const AtEnd unmute([&] { console_->Mute(false); });
  console_->Mute(true);
  while (!rest.empty()) {
    const bool last = rest.find('/') == std::string::npos;
    const std::string segment = CutToken(rest, "/");
    std::string found = ComponentText(segment);
    if (!IsAscii(segment)) {
      const auto place = host_->MakeLocation();
      place->Open(address + "*");
      place->Load();
      for (std::int32_t i = 1; i <= place->ItemCount(); ++i) {
        const std::string listed = place->ItemAt(i)->DataText(data_key::kLocation);
        if (DisplayUtf8(LastSegment(listed)) == segment) found = LastSegment(listed);
      }
      place->Close();
    }
    address += found;
    if (!last) address += '/';
  }
  console_->Forget();
  return address;
}

StandaloneLocationPtr Session::Open(const std::string& address) {
  console_->Forget();
  const auto location = host_->MakeLocation();
  location->Open(address);
  return location;
}

StandaloneLocationPtr Session::OpenMailboxes(const std::string& address) {
  const StandaloneLocationPtr location = Open(address);
  const auto connector = std::dynamic_pointer_cast<MailConnector>(location->Connector());
  if (connector == nullptr)
    throw AppError(ExitCode::Usage, InWords(Phrase::NoAddressOfMail, {Shown(address)}));
  CheckMailboxes(*location);
  if (ComplainOfErrors() && connector->MailFiles().IsEmpty()) {
    throw AppError(ExitCode::Unreadable, InWords(Phrase::NotRead, {Shown(address)}));
  }
  console_->Forget();
  return location;
}

ArchivePtr Session::OpenArchive(const std::string& nativeFolder) {
  const std::string folder = ComponentPath(AbsolutePath(nativeFolder));
  if (!Archive::IsArchive(folder))
    throw AppError(ExitCode::Unreadable, InWords(Phrase::NoArchive, {nativeFolder}));
  return host_->Global().OpenArchive(folder);
}

StandaloneLocationPtr Session::Read(const std::string& address) {
  const StandaloneLocationPtr location = Open(address);
  CheckMailboxes(*location);
  // What the preparation had to say, the reading says again.
  console_->Forget();
  try {
    location->Load();
  } catch (const Failure& failure) {
    StopIfAsked();
    throw ErrorOf(failure, PlaceOf(*location));
  }
  const bool nothingRead = location->ItemCount() == 0;
  if (location->State() != LocationState::Read || (nothingRead && console_->HasErrors())) {
    throw NothingRead(*location, address);
  }
  if (nothingRead) CheckBookmarks(*location);
  return location;
}

AppError Session::NothingRead(StandaloneLocation& location, const std::string& address) {
  if (!console_->HasErrors())
    return {ExitCode::Unreadable, InWords(Phrase::NotRead, {Shown(address)}), PlaceOf(location)};
  const std::vector<Console::ToldError>& errors = console_->Errors();
  const std::string sum = UnreadSum();
  if (errors.size() == 1 || sum.empty())
    return {ExitCode::Unreadable, errors.front().text, PlaceOf(location)};
  std::string last;
  for (const Console::ToldError& error : errors) {
    if (error.isOfDrive) continue;
    if (!last.empty()) console_->Complain(last);
    last = error.text;
  }
  std::string hint = PlaceOf(location);
  if (!hint.empty()) hint += '\n';
  return {ExitCode::Unreadable, last, hint + sum};
}

// A profile without bookmarks is none of the connector's errors.
void Session::CheckBookmarks(StandaloneLocation& location) {
  const auto connector = std::dynamic_pointer_cast<BookmarkConnector>(location.Connector());
  if (connector == nullptr || connector->DatabaseFile().empty() || FileExists(connector->DatabaseFile()))
    return;
  throw AppError(ExitCode::Partly, InWords(Phrase::NoSuchFile, {NativeShown(connector->DatabaseFile())}),
                 InWords(Phrase::BookmarksAreKeptThere));
}

void Session::CheckMailboxes(StandaloneLocation& location) {
  const auto connector = std::dynamic_pointer_cast<MailConnector>(location.Connector());
  if (connector == nullptr) return;
  for (const std::string& file : connector->MailFiles()) {
    if (!FileExists(file)) {
      throw AppError(ExitCode::Unreadable, InWords(Phrase::NoSuchMailbox, {NativeShown(file)}),
                     InWords(Phrase::ListMailboxes));
    }
  }
}

std::string PlaceOf(StandaloneLocation& location) {
  const auto connector = std::dynamic_pointer_cast<BookmarkConnector>(location.Connector());
  if (connector == nullptr || connector->DatabaseFile().empty()) return {};
  return InWords(Phrase::BookmarksAreIn, {NativeShown(connector->DatabaseFile())});
}

std::string Session::UnreadSum() const {
  const int count = console_->UnreadCount();
  return count > 0 && BrokenItemsAreNamed() ? InWords(Phrase::UnreadSum, {std::to_string(count)}) : "";
}

bool Session::ComplainOfErrors() {
  bool any = false;
  for (const Console::ToldError& error : console_->Errors()) {
    if (error.isOfDrive) continue;
    console_->Complain(error.text);
    any = true;
  }
  hasComplained_ |= any;
  return any;
}

bool Session::Confirm(const std::string& question) {
  if (options_.yes || !IsTerminal(stdin) || !IsTerminal(stderr)) return true;
  console_->Say(InWords(Phrase::YesOrNo, {question}));
  std::string answer;
  std::getline(std::cin, answer);
  answer = LowerCase(answer);
  return answer == "y" || answer == "yes" || answer == "j" || answer == "ja";
}

std::string ComponentPath(const std::string& native) {
  return os::ToWindowsPath(native);
}

std::string NativeShown(std::string_view path) {
  const std::string native = os::ToNativePath(path);
  return Shown(native.empty() ? path : native);
}

// Of all of the systems the library's own categories tell in the same words.
std::string ReasonShown(const std::error_code& error) {
  return ToldShown(error.default_error_condition().message());
}

bool IsFolder(const std::string& native) {
  return std::filesystem::is_directory(os::StandardPath(native));
}

std::string AbsolutePath(const std::string& native) {
  return os::NativeText(std::filesystem::absolute(os::StandardPath(native)));
}

std::string NormalPath(const std::string& native) {
  return os::NativeText(os::StandardPath(AbsolutePath(native)).lexically_normal());
}

std::string CauseShown(const Cause& why) {
  return why.path.empty() ? ToldShown(why.reason) : NativeShown(why.path) + ": " + ToldShown(why.reason);
}

std::string ToldShown(std::string_view text) {
  return Shown(Translated(WithShownPaths(text)));
}

AppError ErrorOf(const Failure& failure, std::string hint) {
  const std::string_view own = InWords(failure.Why().hint);
  if (!hint.empty() && !own.empty()) hint += '\n';
  return {ExitCode::Unreadable, CauseShown(failure.Why()), hint.append(own)};
}

std::string ComponentText(const std::string& utf8) {
  return ExactTextFromUtf8(utf8).value_or(utf8);
}

}  // namespace vorlent::app
