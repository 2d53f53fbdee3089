// The calendars of Sunbird and of Thunderbird's Lightning.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Connectors/Mozilla/AddressedLocation.h"
#include "Connectors/Mozilla/CalendarSql.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Host/HostDatabase.h"
#include "Platform/Failure.h"

namespace vorlent {

// Events and tasks of "sunbird://<profile>/<calendar>" and "lightning://<profile>/<calendar>", read from the
// databases of a profile (CalendarFiles.h); without a calendar all of the profile's, without a
// profile all of all profiles. Changes that the host makes to its items are repeated in the calendar that was
// read last, statement by statement and without a transaction of the connector's own. Every connection and
// every changing statement is logged, one that a quote in a text has spoiled too: it fails without reaching
// the database.
class Location_Sunbird final : public AddressedLocation<CalendarConnector> {
 public:
  static constexpr std::string_view kProgId = kSunbirdScheme.progId;

  // Swallows every failure step by step. What can't be written is logged and gone; the item keeps its change.
  void RedoAction(const ItemPtr& itm, std::string_view zeit, std::int32_t msg,
                  std::string_view Value = {}) override;

  // `path` is a profile folder, `prefolder` stands in front of each address. A missing or unreachable
  // database has no calendars; a failed query raises.
  KeyedList<std::string> GetCalendars(std::string_view prefolder, std::string_view fld,
                                      std::string_view path) override;

  std::string DatabaseFile() const override { return databaseFile_; }

 private:
  struct NamedCalendar {
    std::string name;
    std::string id;
  };

  ParameterSettings Parameters() const override;
  bool PrepareAddress(std::string_view file) override;
  void Pasted(const ItemPtr& item, std::string_view import) override;
  bool Withdraw(const ItemPtr& item) override;

  std::string CutScheme(std::string& address) override;
  bool ReadAddress(std::string path) override;
  KeyedList<std::string> Discover(const BrowsePoint& point, std::string_view segment) override;

  // The calendars of the database at hand: all for "*", else the first of that name. Nothing if the database
  // can't be opened.
  std::optional<std::vector<NamedCalendar>> FindCalendars(std::string_view wanted);

  // What GetMozillaProfiles finds of the address's application, as far as it can have calendars.
  KeyedList<std::string> Profiles(std::string_view prefix, std::string_view filter) const;
  bool ReadAllProfiles();
  bool ReadProfile(std::string_view profile, std::string path, TreePtr tree);
  bool ReadShownCalendar(std::string_view folder, const std::string& name, vorlent::Tree& tree);
  bool ReadCalendar(std::string_view folder, const std::string& name);
  void ReadEvents(HostDatabase& db, const std::string& name);
  void ReadTasks(HostDatabase& db, const std::string& name);
  template <class MakeRecord>
  void PasteRow(HostRecordset& row, const std::string& name, MakeRecord makeRecord);
  std::string EventEnd(HostRecordset& row, const std::string& name, const std::string& start);
  std::string EventRecord(HostDatabase& db, HostRecordset& row, const std::string& calendar);
  void TellUnreadable(HostRecordset& row, const std::string& name, const Failure& failure,
                      std::string_view what = {}) const;
  std::string CalendarCondition() const;

  bool ConnectDatabase(HostDatabase& db);
  void ExecuteSql(HostDatabase& db, const CalendarSql& sql);

  using Action = void (Location_Sunbird::*)(HostDatabase& db, vorlent::Item& item, std::string_view value);
  static Action FindAction(std::string_view name);
  void ChangeText(HostDatabase& db, vorlent::Item& item, std::string_view value);
  void ItemRemove(HostDatabase& db, vorlent::Item& item, std::string_view value);
  void ItemInsert(HostDatabase& db, vorlent::Item& item, std::string_view value);
  void Date(HostDatabase& db, vorlent::Item& item, std::string_view value);
  void DataSet(HostDatabase& db, vorlent::Item& item, std::string_view value);
  void InsertEvent(HostDatabase& db, vorlent::Item& item);
  void InsertTask(HostDatabase& db, vorlent::Item& item);
  std::string InsertedCalendarId() const;

  // Of the address looked at last; null before that, and if it was another's.
  const Scheme* scheme_ = nullptr;
  // Both belong to the calendar looked at last, and writes go there whatever calendar an item came from.
  std::string databaseFile_;
  std::string calendarId_;
};

}  // namespace vorlent
