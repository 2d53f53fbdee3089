// The interfaces through which the host drives the component: connectors, actions and wizard controls.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Host/HostEnum.h"
#include "Host/Item.h"
#include "Host/Location.h"
#include "Host/MailRunObserver.h"
#include "Host/Tree.h"
#include "Platform/Public.h"

namespace vorlent {

// The object that serves one Location: reads what lies at its address into items and a keyword tree, and
// answers the host's questions about them.
//
// Calling order: SetLocObject, InitLocation, OpenLocation; then anything; Disconnect and release at the end.
// All on the component's one thread. A stream of mails yields to the host there: what the host runs then must
// not call the connector.
class VORLENT_PUBLIC Connector : public Object {
 public:
  // The Location that this is the connector of, nothing before SetLocObject.
  virtual LocationPtr LocObject() const = 0;
  virtual void SetLocObject(const LocationPtr& location) = 0;

  // Root of the keyword tree, made on first use.
  virtual TreePtr Tree() = 0;
  virtual void SetTree(const TreePtr& tree) = 0;

  // Registers the parameter item and prepares the address. Only the calendar connector ever gives false, for
  // calendars that could not be read; an address that leads nowhere is reported to the host instead.
  virtual bool InitLocation(std::string_view file) = 0;
  // Reads items and tree. The address is that of the Location, whatever `file` says. Unreadable for one that
  // leads nowhere, which the host is told.
  virtual LocationState OpenLocation(std::string_view file) = 0;
  // Ends the work with the Location. No connector keeps anything open for it.
  virtual void Disconnect() = 0;

  // A new item of this connector, stored under the ID that it comes with and counted at the Location.
  virtual ItemPtr NewItem(bool conn = false) = 0;
  // The item of that ID or nothing.
  virtual ItemPtr GetItem(std::string_view id) = 0;
  virtual bool HasID(std::string_view id) = 0;
  // Number of the items in memory.
  virtual std::int32_t Count() = 0;
  // The item at that position from 1, or nothing.
  virtual ItemPtr Item(std::int32_t pos) = 0;
  // Drops the items in memory; the tree stays, and so does all at the source.
  virtual void Clear() = 0;
  // An enumeration of the items that meet a condition. May replace the reference.
  virtual ObjectPtr CreateEnum(ExpressionPtr& expr) = 0;
  // Makes an item of a record string; an item of the same ID is replaced.
  virtual ItemPtr PasteItem(std::string_view import, bool conn) = 0;
  // Deletes an item, at its source as far as the connector can, and tells the host. False for nothing, for a
  // bookmark that isn't in memory and for a calendar that can't be opened. A source that refuses raises.
  virtual bool DeleteItem(const ItemPtr& itm) = 0;
  // Reads items and tree anew.
  virtual void Reload() = 0;
};

using ConnectorPtr = std::shared_ptr<Connector>;

// 0 brings the file out, any other value asks for the path only.
using GetFileOption = std::int32_t;

class VORLENT_PUBLIC MailConnector : public Connector {
 public:
  // As OpenLocation.
  virtual LocationState Einlesen() = 0;
  // Path of a file of a mail: the first line of the data field `key` names it.
  virtual std::string GetFile(const ItemPtr& itm, std::string_view key, GetFileOption getfileoption = 0) = 0;
  // Begins a stream of the mailboxes found by InitLocation. `tr` may be nothing.
  virtual void SourceInit(const TreePtr& tr, bool saveattachments) = 0;
  // The record of the next mail; false at the end.
  virtual bool SourceGetNext(std::string& srcitm) = 0;
  // Marks the mail just delivered, unless it failed: it is deleted at the end of its mailbox.
  virtual void SourceDelete() = 0;
  // The verbs that ExecuteAction knows, separated by commas.
  virtual std::string GetActions() = 0;
  // Runs "<verb>:<id>"; always returns "".
  virtual std::string ExecuteAction(std::string_view cmd) = 0;

  // Paths of the mailboxes that InitLocation found, whether they exist or not.
  virtual const KeyedList<std::string>& MailFiles() const = 0;
  // Who hears what becomes of the mails of the stream, and of those that DeleteItem doesn't mark; null for
  // nobody. It must outlive the calls of the connector.
  virtual void SetRunObserver(MailRunObserver* observer) = 0;
  // Whether the last action wrote all of its mail, but for what the files of attachments lack.
  virtual bool HasRestored() const = 0;
};

// Lets an observer hear a connector of mails for as long as this lives.
class RunObservation {
 public:
  RunObservation(MailConnector& connector, MailRunObserver& observer) : connector_(connector) {
    connector_.SetRunObserver(&observer);
  }
  ~RunObservation() { connector_.SetRunObserver(nullptr); }
  RunObservation(const RunObservation&) = delete;
  RunObservation& operator=(const RunObservation&) = delete;

 private:
  MailConnector& connector_;
};

class VORLENT_PUBLIC BookmarkConnector : public Connector {
 public:
  // Always "": a bookmark has no files.
  virtual std::string GetFile(const ItemPtr& itm, std::string_view key) = 0;
  // Writes bookmarks.html into the profile folder.
  virtual void Save() = 0;
  // The keywords below that of an expression; nothing if the host fails to tell. May replace the reference.
  virtual std::shared_ptr<KeyedList<std::string>> GetSubKeywords(ExpressionPtr& expr) = 0;

  // As Save, but into a file.
  virtual void SaveInto(std::string_view path) = 0;
  // Folder of the profile read last, with a trailing separator; "" before the first was found.
  virtual std::string ProfileFolder() const = 0;
  // The database that was looked for last, whether there is one or not; "" before the first time.
  virtual std::string DatabaseFile() const = 0;
};

class VORLENT_PUBLIC CalendarConnector : public Connector {
 public:
  // Repeats a change that the host made to an item in the calendar's database. `msg` is the host's action
  // number.
  virtual void RedoAction(const ItemPtr& itm, std::string_view zeit, std::int32_t msg,
                          std::string_view Value = {}) = 0;
  // As OpenLocation.
  virtual LocationState Einlesen() = 0;
  // The calendars of a profile folder: discovery entries for "*", else the id of the calendar of that name.
  virtual KeyedList<std::string> GetCalendars(std::string_view prefolder, std::string_view fld,
                                              std::string_view path) = 0;

  // The database looked at last, "" before that.
  virtual std::string DatabaseFile() const = 0;
};

// The actions that the component adds to the host's menu.
class VORLENT_PUBLIC ActionList : public Object {
 public:
  // One entry for each action: its name, "|", a flag word for the menu, "#", the caption.
  virtual KeyedList<std::string> GetActions() = 0;
  // Runs the action of that name to its end; an unknown name does nothing. A failure of the run raises.
  virtual void execute(std::string_view cmd) = 0;
  // Who hears what becomes of the mails of a run; null for nobody. It must outlive the run.
  virtual void SetRunObserver(MailRunObserver* observer) = 0;
};

// A wizard control, driven by the host's wizard frame.
class VORLENT_PUBLIC WizardControl : public Object {
 public:
  // Number of the wizard's pages.
  virtual std::int16_t Pages() const = 0;
  virtual void SetPages(std::int16_t pages) = 0;
  // Shows a page, from 1.
  virtual void ShowPage(std::int16_t page) = 0;
  // The finished command.
  virtual std::string Parameter() = 0;
  virtual void SetParameter(std::string_view parameter) = 0;
  // Whether the wizard may end.
  virtual bool Finish() = 0;
  // Puts what lies directly at the address `qry` into the sheet of folders as rows from position `pos` on (at
  // the end if negative), indented by `ind` and ticked as `cb` says. Always false. A failure of the host
  // rises.
  virtual bool AddSubQueries(std::string_view qry, std::int32_t pos, std::int16_t ind, std::int16_t cb) = 0;
};

}  // namespace vorlent
