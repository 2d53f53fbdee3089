#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Host/HostError.h"
#include "Host/Location.h"
#include "Host/Tree.h"
#include "Platform/Failure.h"
#include "Platform/Public.h"

namespace vorlent {

// The codes of HostGlobal.Report.
namespace report {
inline constexpr std::int32_t kImportFinished = 19;  // the topics were rebuilt after an import
inline constexpr std::int32_t kUnreadable = 27;      // a Location could not be read; the text says why
inline constexpr std::int32_t kLog = 29;             // a line of the log
inline constexpr std::int32_t kDatabaseLog = 30;     // a line of the calendar connector's database log
inline constexpr std::int32_t kProgress = 32;        // "0/100:" and a title, then percentages; "" closes
inline constexpr std::int32_t kStatus = 33;          // the status line, "" clears it
inline constexpr std::int32_t kItemPasted = 37;      // an item was pasted; the text is its record
inline constexpr std::int32_t kItemDeleted = 38;     // the item was deleted from its Location
inline constexpr std::int32_t kTreeImported = 45;    // last report of an import with structure information
// Under Rules::Today() only, out of the way of all other codes:
inline constexpr std::int32_t kRemark =
    1001;  // what a reader has to know of what is read, such as how old it is
}  // namespace report

// The host's main window.
class VORLENT_PUBLIC HostMainWindow : public Object {
 public:
  virtual TreePtr GetPaneTree(std::int32_t pane) = 0;
  // Puts a tree back and so refreshes the pane.
  virtual void SetPaneTree(std::int32_t pane, const TreePtr& tree) = 0;
  virtual bool IsPaneShown(std::int32_t pane) = 0;
};

// The one global object of the host.
class VORLENT_PUBLIC HostGlobal : public Object {
 public:
  // A host object by name, nothing if the host has none: "topics" is the Location of topics, any other name a
  // Location.
  virtual ObjectPtr GetObject(std::string_view name) = 0;  // a macro of windows.h: never read both

  // Any item of the host by ID, nothing if absent.
  virtual ItemPtr FindItem(std::string_view id) = 0;

  // The Locations known to the host.
  virtual KeyedList<LocationPtr> Locations() = 0;

  // The one channel of progress, status and log; `code` from namespace report.
  virtual void Report(std::int32_t code, std::string_view text, const ItemPtr& item) = 0;

  // Reports that a Location, or a part of it, could not be read. A host that shows paths in a form of its own
  // overrides it.
  virtual void ReportUnreadable(const Cause& why) { Report(report::kUnreadable, why.Text(), nullptr); }

  // Reports what a person has to know about what is read; may be overridden as ReportUnreadable.
  virtual void Remark(const Cause& what) { Report(report::kRemark, what.Text(), nullptr); }

  // A host setting, "" if there is none; such as "autotopic".
  virtual std::string GetOption(std::string_view key) = 0;

  // Folder for temporary files, with a trailing separator.
  virtual std::string TempPath() = 0;

  // The host's main window, nothing if it has none.
  virtual std::shared_ptr<HostMainWindow> MainWindow() = 0;

  // True once the user has asked to stop.
  virtual bool Cancelled() = 0;

  // Shows or hides the progress display.
  virtual void SetProgressVisible(bool visible) = 0;

  // The switch of the host's log.
  virtual bool LogEnabled() = 0;
  virtual void SetLogEnabled(bool enabled) = 0;

  // The name of the current user.
  virtual std::string UserName() = 0;

  // The name of a host action number, such as "ChangeText" or "ItemRemove"; "" for a number without one.
  virtual std::string ActionName(std::int32_t msg) = 0;

  // The way to the report of errors.
  virtual std::shared_ptr<HostErrorFactory> ErrorFactory() = 0;
};

}  // namespace vorlent
