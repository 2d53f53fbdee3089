// The standalone host's global object.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/HostGlobal.h"
#include "Platform/WorkFolder.h"
#include "Standalone/Archive.h"
#include "Standalone/HostObserver.h"
#include "Standalone/StandaloneError.h"
#include "Standalone/StandaloneLocation.h"
#include "Standalone/StandaloneWindow.h"
#include "Standalone/Topics.h"

namespace vorlent {

class ArchiveRehearsal;

// Hands reports to the observer, which must outlive it, and knows the open Locations.
class StandaloneGlobal : public HostGlobal, public std::enable_shared_from_this<StandaloneGlobal> {
 public:
  explicit StandaloneGlobal(HostObserver& observer);
  // Closes the Locations and archives that are still open and removes the temporary folder.
  ~StandaloneGlobal() override;

  // "topics"; an open Location by its name or an archive by its last folder too, letter case of no matter; or
  // an archive that is not open yet by its path.
  ObjectPtr GetObject(std::string_view name) override;
  // The chosen item, else in the open Locations, then in the open archives.
  ItemPtr FindItem(std::string_view id) override;
  // The open archives, then the other open Locations.
  KeyedList<LocationPtr> Locations() override;
  void Report(std::int32_t code, std::string_view text, const ItemPtr& item) override;
  void ReportUnreadable(const Cause& why) override { observer_.LocationUnreadable(why); }
  void Remark(const Cause& what) override { observer_.Remarked(what); }
  std::string GetOption(std::string_view key) override;
  // A work folder of this process, made on first use.
  std::string TempPath() override;
  std::shared_ptr<HostMainWindow> MainWindow() override { return window_; }
  bool Cancelled() override { return cancelled_.load(std::memory_order_relaxed); }
  void SetProgressVisible(bool visible) override { observer_.ProgressShown(visible); }
  bool LogEnabled() override { return logEnabled_; }
  void SetLogEnabled(bool enabled) override { logEnabled_ = enabled; }
  // The login name unless the host was told another.
  std::string UserName() override { return userName_; }
  std::string ActionName(std::int32_t msg) override;
  std::shared_ptr<HostErrorFactory> ErrorFactory() override { return errorFactory_; }

  // --- What the host itself knows and does beyond the contract

  // Set by whoever hears that the user wants to stop, be it a signal handler.
  std::atomic<bool>& CancelFlag() { return cancelled_; }
  void SetOption(std::string_view key, std::string_view value) {
    options_.insert_or_assign(std::string(key), value);
  }
  void SetUserName(std::string_view name) { userName_ = name; }
  // Chooses the item that is meant by its ID from now on, as IDs may repeat; nothing chooses none.
  void ChooseItem(const ItemPtr& item) { chosenItem_ = item; }
  StandaloneWindow& Window() { return *window_; }
  const std::shared_ptr<TopicsLocation>& TopicsOfHost();

  // Makes the component's objects: its own entry, unless another way to them or a test stands in for that.
  using ConnectorFactory = std::function<ObjectPtr(std::string_view progId)>;
  void SetConnectorFactory(ConnectorFactory factory) { createConnector_ = std::move(factory); }
  ObjectPtr CreateConnector(std::string_view progId) { return createConnector_(progId); }

  // Makes an opened Location known, for as long as someone holds it open.
  void Remember(const StandaloneLocationPtr& location);
  // A Location is being read as long as this stands: once the user wants to stop, the next report of progress
  // fails, and the reading ends with it.
  class Reading {
   public:
    explicit Reading(StandaloneGlobal& global)
        : isReading_(global.isReading_), before_(std::exchange(isReading_, true)) {}
    ~Reading() { isReading_ = before_; }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

   private:
    bool& isReading_;
    bool before_;
  };
  // The archive of a folder, opened and made if need be, and kept open as long as the host unless someone
  // closes it.
  ArchivePtr OpenArchive(std::string_view folder);
  // From here on GetObject gives what stands in for the archive of a folder, which it leaves as it is.
  std::shared_ptr<ArchiveRehearsal> RehearseArchive(std::string_view folder);

 private:
  void ReportProgress(std::string_view text);
  std::vector<StandaloneLocationPtr> OpenLocations() const;
  ArchivePtr OpenArchiveNamed(std::string_view name) const;

  HostObserver& observer_;
  std::shared_ptr<StandaloneWindow> window_;
  std::shared_ptr<StandaloneErrorFactory> errorFactory_;
  ConnectorFactory createConnector_;
  std::shared_ptr<TopicsLocation> topics_;
  std::vector<std::weak_ptr<StandaloneLocation>> openLocations_;
  std::vector<ArchivePtr> archives_;
  std::shared_ptr<ArchiveRehearsal> rehearsal_;
  std::map<std::string, std::string, std::less<>> options_;
  ItemPtr chosenItem_;
  std::optional<os::WorkFolder> workFolder_;
  std::string tempPath_;  // "" until first needed
  std::string userName_;
  bool logEnabled_ = true;
  bool isReading_ = false;
  std::atomic<bool> cancelled_ = false;
  static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");
};

}  // namespace vorlent
