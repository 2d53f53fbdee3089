// What the host calls: the interfaces of the component's own classes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Host/HostEnum.h"
#include "Host/Item.h"
#include "Host/Location.h"
#include "Host/Tree.h"

namespace vorlent {

// The object behind one Location: reads what lies at its address into items and a keyword tree, and answers
// the host's questions about them.
//
// Calling order: SetLocObject, InitLocation, OpenLocation; then anything; Disconnect and release at the end.
class Connector : public Object {
 public:
  virtual LocationPtr LocObject() const = 0;
  virtual void SetLocObject(const LocationPtr& location) = 0;

  // Root of the keyword tree, made on first use.
  virtual TreePtr Tree() = 0;
  virtual void SetTree(const TreePtr& tree) = 0;

  // Registers the parameter item and prepares the address.
  virtual bool InitLocation(std::string_view file) = 0;
  // Reads items and tree. The address is that of the Location, whatever `file` says.
  virtual LocationState OpenLocation(std::string_view file) = 0;
  virtual void Disconnect() = 0;

  virtual ItemPtr NewItem(bool conn = false) = 0;
  // The item of that ID or nothing.
  virtual ItemPtr GetItem(std::string_view id) = 0;
  virtual bool HasID(std::string_view id) = 0;
  virtual std::int32_t Count() = 0;
  // The item at that position from 1, or nothing.
  virtual ItemPtr Item(std::int32_t pos) = 0;
  virtual void Clear() = 0;
  // An enumeration of the items that meet a condition. May replace the reference.
  virtual ObjectPtr CreateEnum(ExpressionPtr& expr) = 0;
  // Makes an item of a record string; an item of the same ID is replaced.
  virtual ItemPtr PasteItem(std::string_view import, bool conn) = 0;
  // Deletes an item, at its source as far as the connector can.
  virtual bool DeleteItem(const ItemPtr& itm) = 0;
  virtual void Reload() = 0;
};

using ConnectorPtr = std::shared_ptr<Connector>;

// 0 brings the file out, any other value asks for the path only.
using GetFileOption = std::int32_t;

class MailConnector : public Connector {
 public:
  virtual LocationState Einlesen() = 0;
  // Path of a file of a mail: the first line of the data field `key` names it.
  virtual std::string GetFile(const ItemPtr& itm, std::string_view key, GetFileOption getfileoption = 0) = 0;
  // Begins a stream of the mailboxes found by InitLocation. `tr` may be nothing.
  virtual void SourceInit(const TreePtr& tr, bool saveattachments) = 0;
  // The record of the next mail; false at the end.
  virtual bool SourceGetNext(std::string& srcitm) = 0;
  // Marks the mail just delivered: it is deleted at the end of its mailbox.
  virtual void SourceDelete() = 0;
  virtual std::string GetActions() = 0;
  // Runs "<verb>:<id>"; always returns "".
  virtual std::string ExecuteAction(std::string_view cmd) = 0;
};

class BookmarkConnector : public Connector {
 public:
  // Always "": a bookmark has no files.
  virtual std::string GetFile(const ItemPtr& itm, std::string_view key) = 0;
  // Writes bookmarks.html into the profile folder.
  virtual void Save() = 0;
  virtual std::shared_ptr<KeyedList<std::string>> GetSubKeywords(ExpressionPtr& expr) = 0;
};

class CalendarConnector : public Connector {
 public:
  // Repeats a change that the host made to an item in the calendar's database. `msg` is the host's action
  // number.
  virtual void RedoAction(const ItemPtr& itm, std::string_view zeit, std::int32_t msg,
                          std::string_view Value = {}) = 0;
  virtual LocationState Einlesen() = 0;
  // The calendars of a profile folder: discovery entries for "*", else the id of the calendar of that name.
  virtual KeyedList<std::string> GetCalendars(std::string_view prefolder, std::string_view fld,
                                              std::string_view path) = 0;
};

// The actions that the component adds to the host's menu.
class ActionList : public Object {
 public:
  virtual KeyedList<std::string> GetActions() = 0;
  virtual void execute(std::string_view cmd) = 0;
};

// A wizard control, driven by the host's wizard frame.
class WizardControl : public Object {
 public:
  virtual std::int16_t Pages() const = 0;
  virtual void SetPages(std::int16_t pages) = 0;
  // Shows a page, from 1.
  virtual void ShowPage(std::int16_t page) = 0;
  // The finished command.
  virtual std::string Parameter() = 0;
  virtual void SetParameter(std::string_view parameter) = 0;
  // Whether the wizard may end.
  virtual bool Finish() = 0;
  virtual bool AddSubQueries(std::string_view qry, std::int32_t pos, std::int16_t ind, std::int16_t cb) = 0;
};

}  // namespace vorlent
