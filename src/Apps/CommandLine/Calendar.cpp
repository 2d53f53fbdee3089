#include <optional>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/DatabaseSnapshot.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Connectors/Mozilla/CalendarFiles.h"
#include "Host/Connector.h"
#include "Host/RecordKeys.h"
#include "Standalone/Phrases.h"
#include "Standalone/SourceEdits.h"

namespace vorlent::app {

namespace {

struct CalendarOptions {
  std::string address;
  std::vector<std::string> items;
  bool task = false;
  std::optional<std::string> text, start, end, location;
};

constexpr std::int64_t kDefaultSeconds = 3600;

// For a program that is about to end, or another one like this, in milliseconds.
constexpr int kLongestWait = 2000;

[[noreturn]] void Refuse(const std::string& text, const std::string& hint = {}) {
  throw AppError(ExitCode::Usage, text, hint);
}

// The database of the calendar that was read last.
std::string DatabaseFileOf(StandaloneLocation& location) {
  return RequireAs<CalendarConnector>(location.Connector())->DatabaseFile();
}

// What Thunderbird has in use, or may not be written, can be read all the same, but not changed.
void CheckWritable(StandaloneLocation& location) {
  const std::string file = DatabaseFileOf(location);
  if (!IsThunderbirdCalendarFile(file)) return;
  const SqliteObstacle obstacle = ObstacleToWriting(file, kLongestWait);
  if (obstacle == SqliteObstacle::None) return;
  throw ErrorOf(Failure(static_cast<int>(ErrorNumber::PermissionDenied), CauseOf(obstacle, file)));
}

// Changes go to the calendar that was read last, so an address must name exactly one.
StandaloneLocationPtr ReadCalendar(Session& session, const std::string& given) {
  const std::string address = session.Address(given);
  std::string rest = address;
  const std::string scheme = CutToken(rest, "://");
  const std::string profile = CutToken(rest, "/");
  const std::string calendar = CutToken(rest, "/");
  if ((scheme != "sunbird" && scheme != "lightning") || profile.empty() || calendar.empty() ||
      calendar == "*") {
    Refuse(InWords(Phrase::NoCalendar, {given}), InWords(Phrase::CalendarForm));
  }
  StandaloneLocationPtr location = session.Read(address);
  CheckWritable(*location);
  // What can't be read of the calendar is told, but is no failure of the change.
  for (const Console::ToldError& error : session.Output().Errors())
    session.Output().Complain(error.text);
  session.Output().Forget();
  return location;
}

// Seconds since 1970 in UTC of a local date text. Raises AppError for what the calendar can't keep.
std::int64_t Moment(const std::string& date) {
  std::int64_t moment = 0;
  if (LocalToUtcText(date).empty()) Refuse(InWords(Phrase::NoDate, {date}), InWords(Phrase::DateForm));
  if (!Swallow([&] { moment = CalendarSeconds(date); })) {
    Refuse(InWords(Phrase::NoTimeOfCalendars, {date}), InWords(Phrase::CalendarEnds));
  }
  return moment;
}

std::string AnHourAfter(const std::string& date) {
  std::string later;
  const std::int64_t moment = Moment(date) + kDefaultSeconds;
  if (!Swallow([&] { later = CalendarTimeText(moment); })) Refuse(InWords(Phrase::NoTimeOfCalendars, {date}));
  return later;
}

void CheckTimes(const std::string& start, const std::string& end) {
  if (Moment(end) < Moment(start)) Refuse(InWords(Phrase::EndBeforeStart, {end, start}));
}

// Tells what the database refused, and ends the command accordingly.
ExitCode Finish(Session& session, const std::string& done) {
  if (!session.ComplainOfErrors()) {
    std::puts(done.c_str());
    return ExitCode::Done;
  }
  session.Output().Say(InWords(EscapesCalendarTexts() ? Phrase::LogShowsStatements : Phrase::QuoteEndsText));
  return ExitCode::Partly;
}

// Texts go into the calendar as the UTF-8 in which it keeps them.
std::string NewRecord(const CalendarOptions& options, const std::string& calendar) {
  const std::string now = NowStamp();
  std::string record;
  AppendField(record, record_key::kType, options.task ? "task" : "termin");
  AppendField(record, record_key::kText, EscapeValue(options.text.value_or("")));
  if (!options.task) {
    const std::string end = options.end ? *options.end : AnHourAfter(*options.start);
    CheckTimes(*options.start, end);
    AppendField(record, record_key::kDate, *options.start);
    AppendDataField(record, data_key::kDateEnd, end);
    AppendDataField(record, data_key::kLocation, EscapeValue(options.location.value_or("")));
  }
  AppendDataField(record, data_key::kCalendar, EscapeValue(calendar));
  AppendField(record, record_key::kLog, now + "," + now + "*1");
  return record;
}

ExitCode Add(Session& session, const CalendarOptions& options) {
  if (options.task && (options.start || options.end || options.location)) {
    Refuse(InWords(Phrase::TaskHasNoTimes));
  }
  if (!options.task && !options.start) Refuse(InWords(Phrase::EventNeedsStart), InWords(Phrase::OrTask));
  const StandaloneLocationPtr location = ReadCalendar(session, options.address);
  std::string path = location->Name();
  CutToken(path, "://");
  CutToken(path, "/");
  const ItemPtr item = location->PasteRecord(NewRecord(options, CalendarOfSegment(CutToken(path, "/"))));
  return Finish(session, InWords(Phrase::Added, {Shown(item->Text()), Shown(item->ID())}));
}

void Edit(StandaloneItem& item, const CalendarOptions& options) {
  if (options.text) item.SetText(*options.text);
  if (options.start) item.SetDate(*options.start);
  if (options.end) item.SetData(data_key::kDateEnd, *options.end, false);
  if (options.location) item.SetData(data_key::kLocation, *options.location, false);
}

// An event that has no end of its own, or none after its beginning, takes that along.
CalendarOptions WithEnd(const CalendarOptions& options, StandaloneItem& item) {
  CalendarOptions whole = options;
  const std::string end = item.DataText(data_key::kDateEnd);
  const bool takesAlong = TakesCalendarAddressesWhole() && item.Type() == "termin" && options.start &&
                          !options.end && end == item.Date();
  if (takesAlong) whole.end = options.start;
  return whole;
}

ExitCode Set(Session& session, const CalendarOptions& given) {
  if (!given.text && !given.start && !given.end && !given.location) Refuse(InWords(Phrase::NothingToSet));
  const StandaloneLocationPtr location = ReadCalendar(session, given.address);
  const StandaloneItemPtr item = FindItem(*location, given.items.front());
  if (item == nullptr) {
    session.Output().Complain(InWords(Phrase::NoItem, {given.items.front(), given.address}));
    return ExitCode::Partly;
  }
  const CalendarOptions options = WithEnd(given, *item);
  if (item->Type() == "task" && (options.start || options.end || options.location)) {
    Refuse(InWords(Phrase::TaskHasNoTimes));
  }
  // What is stored may be as odd as it likes, so long as nobody asks to change it.
  if (item->Type() == "termin" && (options.start || options.end)) {
    CheckTimes(options.start.value_or(item->Date()),
               options.end.value_or(item->DataText(data_key::kDateEnd)));
  }
  const std::string oldLocation = item->DataText(data_key::kLocation);
  SourceEdits edits;
  {
    const ItemListening listening(session.Host(), edits);
    Edit(*item, options);
  }
  const ExitCode code = Finish(session, InWords(Phrase::Changed, {Shown(item->Text()), Shown(item->ID())}));
  const bool isAdded = code == ExitCode::Done && options.location.has_value();
  const bool isKept = isAdded && !IsThunderbirdCalendarFile(DatabaseFileOf(*location));
  if (isKept && !oldLocation.empty() && oldLocation != *options.location) {
    session.Output().Say(InWords(Phrase::OldLocationStays, {Shown(oldLocation)}));
  }
  return code;
}

ExitCode Remove(Session& session, const CalendarOptions& options) {
  const StandaloneLocationPtr location = ReadCalendar(session, options.address);
  const auto connector = RequireAs<Connector>(location->Connector());
  // Numbers mean places in the list before anything is removed.
  const FoundItems found = FindItems(*location, options.items);
  for (const std::string& missing : found.missing)
    session.Output().Complain(InWords(Phrase::NoItem, {missing, options.address}));
  ExitCode code = found.missing.empty() ? ExitCode::Done : ExitCode::Partly;
  for (const StandaloneItemPtr& item : found.items) {
    if (!session.Confirm(InWords(Phrase::RemoveFromCalendar, {Shown(item->Text())})))
      return ExitCode::Cancelled;
    session.Output().Forget();
    connector->DeleteItem(item);
    if (Finish(session, InWords(Phrase::Removed, {Shown(item->Text())})) != ExitCode::Done)
      code = ExitCode::Partly;
  }
  return code;
}

using Run = ExitCode (*)(Session&, const CalendarOptions&);
using OptionsPtr = std::shared_ptr<CalendarOptions>;

// A command below "calendar"; all of them take the calendar's address first.
CLI::App& Declare(CLI::App& parent, Action& action, const std::string& name, const std::string& summary,
                  const OptionsPtr& options, Run run) {
  CLI::App& command = *parent.add_subcommand(name, summary);
  command.add_option("ADDRESS", options->address, "Which calendar: sunbird://PROFILE/CALENDAR")->required();
  command.callback([options, &action, run] {
    action = [options, run](Session& session) { return run(session, *options); };
  });
  return command;
}

void DeclareTexts(CLI::App& command, const OptionsPtr& options) {
  command.add_option("--text", options->text, "What it is called");
  command.add_option("--start", options->start, "When it begins in local time, such as \"09.05.2010 14:30\"");
  command.add_option("--end", options->end, "When it ends");
  command.add_option("--location", options->location, "Where it takes place");
}

}  // namespace

void DeclareCalendar(CLI::App& command, Action& action) {
  command.require_subcommand(1);
  const auto adding = std::make_shared<CalendarOptions>();
  CLI::App& add =
      Declare(command, action, "add", "Add an event, which lasts an hour unless told otherwise", adding, Add);
  DeclareTexts(add, adding);
  add.get_option("--text")->required();
  add.add_flag("--task", adding->task, "Add a task instead");

  const auto setting = std::make_shared<CalendarOptions>();
  CLI::App& set = Declare(command, action, "set", "Change an event or a task", setting, Set);
  set.add_option("ID", setting->items, "ID of the item, or its number in the list of `read`")
      ->required()
      ->expected(1);
  DeclareTexts(set, setting);

  const auto removing = std::make_shared<CalendarOptions>();
  CLI::App& remove = Declare(command, action, "remove", "Remove events and tasks", removing, Remove);
  remove.add_option("ID", removing->items, "IDs of the items, or their numbers in the list of `read`")
      ->required();
}

}  // namespace vorlent::app
