// A host, a user's desktop and an application-data folder for the tests of the bookmark connector.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Connectors/Mozilla/Location_FireFox.h"
#include "Support/PlacesFile.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/TemporaryFolder.h"

namespace vorlent::test {

// The text with every braced GUID shown as {}.
inline std::string WithoutGuids(std::string text) {
  constexpr std::size_t kLength = 38;
  for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at + 2)) {
    if (at + kLength <= text.size() && text[at + kLength - 1] == '}') text.replace(at, kLength, "{}");
  }
  return text;
}

inline std::vector<std::string> WithoutGuids(std::vector<std::string> lines) {
  for (std::string& line : lines)
    line = WithoutGuids(line);
  return lines;
}

inline std::string CriticalBox(const std::string& text, const std::string& title) {
  return "ShowMessage(\"" + text + "\",\"" + title + "\",Critical,Ok) -> Ok";
}

inline std::string ConnectBox(const std::string& detail) {
  return CriticalBox("Cannot connect FireFox Bookmarks (please close FireFox)\\n\\n" + detail, "FireFox");
}

class FireFoxTest : public testing::Test {
 protected:
  static constexpr char kMozilla[] = "Mozilla\\FireFox\\";

  FireFoxTest() { platform_->SetAppData(folder_.Path()); }

  // A profiles.ini of a general section and one profile for each name, whose folder is
  // "Profiles/<name>.default".
  void WriteProfiles(const std::vector<std::string>& names) {
    std::string ini = "[General]\r\nStartWithLastProfile=1\r\n\r\n";
    for (std::size_t i = 0; i < names.size(); ++i) {
      ini += "[Profile" + std::to_string(i) + "]\r\nName=" + names[i] + "\r\nIsRelative=1\r\nPath=Profiles/" +
             names[i] + ".default\r\n\r\n";
      folder_.MakeFolder(ProfileFolder(names[i]));
    }
    WriteProfilesIni(ini);
  }

  void WriteProfilesIni(std::string_view ini) { folder_.Write(std::string(kMozilla) + "profiles.ini", ini); }

  static std::string ProfileFolder(const std::string& name = "x") {
    return kMozilla + ("Profiles\\" + name + ".default");
  }
  static std::string PlacesName(const std::string& profile = "x") {
    return ProfileFolder(profile) + "\\places.sqlite";
  }
  std::filesystem::path PlacesPath(const std::string& profile = "x") const {
    return folder_.Native(PlacesName(profile));
  }

  // The bookmarks of a profile "x", the only one: empty but for the root row, whose id is 1.
  PlacesFile& Places() {
    if (places_ == nullptr) {
      WriteProfiles({"x"});
      places_ = std::make_unique<PlacesFile>(PlacesPath());
      places_->AddFolder(0, "");
    }
    return *places_;
  }

  // A connector on an address, ready to be opened.
  std::shared_ptr<Location_FireFox> Connect(std::string_view address) {
    if (places_ != nullptr) places_->Commit();
    location_ = host_.MakeLocation(std::string(address));
    auto connector = std::make_shared<Location_FireFox>();
    connector->SetLocObject(location_);
    return connector;
  }

  // As Connect, and opens it.
  std::shared_ptr<Location_FireFox> Open(std::string_view address) {
    auto connector = Connect(address);
    state_ = connector->OpenLocation("");
    return connector;
  }

  std::vector<std::string> Boxes() const { return platform_->CallsOf("ShowMessage"); }
  std::vector<std::string> Reports() const { return host_.Log.Only({"Global.Report"}); }
  std::string TreeText() const { return host_.Trees.empty() ? "no tree" : host_.Trees.back()->Dump(); }

  // The records of all pasted items, in order, without what is new in every read.
  std::vector<std::string> Records() const {
    std::vector<std::string> records;
    for (const auto& item : host_.Items) {
      if (!item->Record.empty()) records.push_back(WithoutGuids(item->Record));
    }
    return records;
  }

  static std::vector<std::string> Texts(Location_FireFox& connector) {
    std::vector<std::string> texts;
    for (std::int32_t pos = 1; pos <= connector.Count(); ++pos)
      texts.push_back(connector.Item(pos)->Text());
    return texts;
  }

  TemporaryFolder folder_;
  ScopedRecordingPlatform platform_;
  RecordingHost host_;
  std::unique_ptr<PlacesFile> places_;
  std::shared_ptr<RecordingLocation> location_;
  LocationState state_ = LocationState::Unreadable;
};

}  // namespace vorlent::test
