// The statements that the calendar connector builds around the values of an item.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace vorlent {

// One statement with its values in their places. By the rules of old values go in as they stand, a quote
// isn't doubled: what the statement then says is what the log shows. A value that could end its place and
// say something of its own spoils the statement, which must not be given to a database then.
class CalendarSql {
 public:
  enum class Form {
    ReadLocation,      // id
    ChangeTitle,       // table, title, time of change, id
    ChangeStart,       // start, time of change, id
    ChangeEnd,         // end, time of change, id
    ChangeTime,        // time of change, id
    DeleteItem,        // table, id
    DeleteProperties,  // id
    DeleteLocation,    // id, location
    InsertLocation,    // id, location
    InsertEvent,       // id, calendar, title, start, end, time of change, time of making
    InsertTask,        // id, calendar, title, time of change, time of making
  };

  // The values in the order of their places, as many as there are.
  template <Form kForm, std::size_t kCount>
  static CalendarSql Of(const std::string (&values)[kCount]) {
    static_assert(!TextOf(kForm).empty(), "every form has a row");
    static_assert(kCount == PlacesOf(TextOf(kForm)), "every place of the form takes one value");
    static_assert(IsTextQuoted(TextOf(kForm)), "a text stands in quotes");
    return {TextOf(kForm), values};
  }

  const std::string& Text() const { return text_; }
  bool IsSpoiled() const { return isSpoiled_; }

 private:
  // What stands for a value: a text, which the form has in quotes; a number; the name of a table, which never
  // comes from an item.
  static constexpr char kText = '?';
  static constexpr char kNumber = '#';
  static constexpr char kTable = '@';

  struct Row {
    Form form;
    std::string_view text;
  };

  static constexpr std::array<Row, 11> kRows = {{
      {Form::ReadLocation, "SELECT value FROM cal_properties WHERE item_id='?' AND key='LOCATION'"},
      {Form::ChangeTitle, "UPDATE @ SET title='?', last_modified=# WHERE id='?';"},
      {Form::ChangeStart, "UPDATE cal_events SET event_start=#, last_modified=# WHERE id='?';"},
      {Form::ChangeEnd, "UPDATE cal_events SET event_end=#, last_modified=# WHERE id='?';"},
      {Form::ChangeTime, "UPDATE cal_events SET last_modified=# WHERE id='?';"},
      {Form::DeleteItem, "DELETE FROM @ WHERE id='?';"},
      {Form::DeleteProperties, "DELETE FROM cal_properties WHERE item_id='?';"},
      {Form::DeleteLocation,
       "DELETE FROM cal_properties WHERE item_id='?' AND key='LOCATION' AND value='?';"},
      {Form::InsertLocation, "INSERT INTO cal_properties (item_id,key,value) VALUES ('?','LOCATION','?');"},
      // The time zone is the same for every event, whatever the machine's.
      {Form::InsertEvent,
       "INSERT INTO cal_events (id, cal_id, title, event_start, event_end, last_modified, time_created, "
       "flags, event_start_tz, event_end_tz) VALUES ('?', #, '?', #, #, #, #, 4, "
       "'/mozilla.org/20050126_1/Europe/Berlin', '/mozilla.org/20050126_1/Europe/Berlin');"},
      {Form::InsertTask,
       "INSERT INTO cal_todos (id, cal_id, title, last_modified, time_created, flags) VALUES "
       "('?', #, '?', #, #, 4);"},
  }};

  static constexpr bool IsPlace(char c) { return c == kText || c == kNumber || c == kTable; }
  static constexpr std::string_view TextOf(Form form) {
    for (const Row& row : kRows) {
      if (row.form == form) return row.text;
    }
    return {};
  }
  static constexpr std::size_t PlacesOf(std::string_view form) {
    std::size_t places = 0;
    for (const char c : form)
      places += IsPlace(c) ? 1 : 0;
    return places;
  }

  // A text outside quotes would not be checked for what ends it.
  static constexpr bool IsTextQuoted(std::string_view form) {
    for (std::size_t at = form.find(kText); at != std::string_view::npos; at = form.find(kText, at + 1)) {
      if (at == 0 || form[at - 1] != '\'' || form.substr(at + 1, 1) != "'") return false;
    }
    return true;
  }

  CalendarSql(std::string_view form, std::span<const std::string> values);

  std::string text_;
  bool isSpoiled_ = false;
};

}  // namespace vorlent
