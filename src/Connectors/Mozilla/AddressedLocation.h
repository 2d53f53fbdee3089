// What the connectors have in common in reading their addresses: <scheme>://<profile>/<segment>/...
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/LocationFrame.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/Profiles.h"
#include "Connectors/Mozilla/Schemes.h"

namespace vorlent {

// Where a browse stands in its address.
struct BrowsePoint {
  std::int32_t level = 1;   // of the segment that is looked for; on the first there are profiles
  std::string prefix;       // the scheme and the segments that were found
  std::string profilePath;  // what was found on the first level
  std::string folderPath;   // what was found last on a level after it
};

// A connector with the frame's interface that says how its addresses begin, what it reads at one, and what
// there is on each level of one that is browsed.
template <class Interface>
class AddressedLocation : public LocationFrame<Interface> {
 public:
  LocationState Einlesen() final {
    this->Clear();
    this->Tree()->Clear();
    const std::string address = this->HostLocation().Name();
    std::string path = address;
    std::string scheme = CutScheme(path);
    if (scheme.empty()) {
      frame::ReportForeignAddress();
      return LocationState::Unreadable;
    }
    this->lastAddress_ = address;
    if (address.ends_with(kBrowseMark)) return Browse(std::move(scheme), std::move(path));
    return ReadAddress(std::move(path)) ? LocationState::Read : LocationState::Unreadable;
  }

 protected:
  // An address that ends so is browsed.
  static constexpr std::string_view kBrowseMark = "/*";

  // Cuts the scheme with its "://" off an address and gives it, "" if it isn't the connector's own.
  virtual std::string CutScheme(std::string& address) = 0;

  // Reads items and tree of an address without its scheme. False if the Location can't be read.
  virtual bool ReadAddress(std::string path) = 0;

  // All that is at a point of a browse for the segment "*", in the form that PasteLocations takes; else the
  // paths of what is there of that name.
  virtual KeyedList<std::string> Discover(const BrowsePoint& point, std::string_view segment) = 0;

  // Makes items of what a browse found on a level.
  virtual void PasteLocations(const KeyedList<std::string>& entries, std::int32_t level) {
    for (const std::string& entry : entries)
      this->PasteItem(LocationRecord(entry, level), false);
  }

  // Tells why a Location could not be read.
  virtual void TellMissing(std::string_view text) { frame::ShowUnreadable(text); }

  // Tells that an application has none.
  void TellNoProfile(const Scheme& scheme) {
    frame::ReportUnreadable({ProfilesFileOf(scheme.appFolder), "kein Profil gefunden"});
  }

  void TellMissingProfile(std::string_view name) {
    TellMissing("Profil '" + std::string(name) + "' nicht gefunden!");
  }

 private:
  // Each segment must name one thing, in which the next is looked for; at a "*" all that is there becomes
  // items.
  LocationState Browse(std::string scheme, std::string path) {
    BrowsePoint point;
    point.prefix = std::move(scheme);
    for (; !path.empty(); ++point.level) {
      const std::string segment = CutToken(path, "/");
      const KeyedList<std::string> found = Discover(point, segment);
      if (segment == "*") {
        PasteLocations(found, point.level);
      } else if (found.Count() == 1) {
        point.prefix += segment + "/";
        (point.level == 1 ? point.profilePath : point.folderPath) = found.Item(1);
      } else {
        TellMissing(point.prefix + segment + " nicht gefunden!");
        return LocationState::Unreadable;
      }
    }
    return LocationState::Read;
  }
};

}  // namespace vorlent
