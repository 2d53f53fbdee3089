// What the standalone host tells whoever shows it to a person.
#pragma once

#include <cstdint>
#include <string_view>

#include "Host/HostError.h"
#include "Host/Item.h"
#include "Host/Tree.h"
#include "Platform/Failure.h"

namespace vorlent {

// Every member does nothing unless it is overridden. Texts are code page. All calls come on the thread that
// runs the component.
class HostObserver {
 public:
  virtual ~HostObserver() = default;

  // The progress display opens under a title at 0, moves to a percentage with fraction, and closes.
  virtual void ProgressOpened(std::string_view /*title*/) {}
  virtual void ProgressMoved(double /*percent*/) {}
  virtual void ProgressClosed() {}
  virtual void ProgressShown(bool /*visible*/) {}

  // "" clears the status line.
  virtual void StatusChanged(std::string_view /*text*/) {}

  // A line of the log, not called while the log is off.
  virtual void LogLine(std::string_view /*line*/) {}
  virtual void DatabaseLogLine(std::string_view /*line*/) {}

  // A Location, or a part of it, could not be read.
  virtual void LocationUnreadable(const Cause& /*why*/) {}
  // What was read has something about it that its reader has to know.
  virtual void Remarked(const Cause& /*what*/) {}
  // An error object was raised; the meaning of the arguments is that of HostError::Raise.
  virtual void ErrorRaised(std::int32_t /*kind*/, std::string_view /*source*/, bool /*flag*/,
                           std::string_view /*text*/) {}
  // As ErrorRaised with the meaning of HostError::RaiseForDrive: an error unless it is overridden.
  virtual void ErrorRaisedForDrive(std::string_view source, std::string_view text) {
    ErrorRaised(HostError::kMissing, source, false, text);
  }

  virtual void ItemPasted(std::string_view /*record*/, const ItemPtr& /*item*/) {}
  virtual void ItemDeleted(const ItemPtr& /*item*/) {}
  virtual void ImportFinished() {}
  virtual void TreeImported() {}
  virtual void PaneRefreshed(std::int32_t /*pane*/, const TreePtr& /*tree*/) {}

  // A report of a code that the host doesn't know.
  virtual void OtherReport(std::int32_t /*code*/, std::string_view /*text*/, const ItemPtr& /*item*/) {}
};

}  // namespace vorlent
