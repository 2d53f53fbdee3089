// A server, a host over COM and the sample profiles, for clients of the component.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Component/Com/ScriptedHost.h"
#include "Component/Com/ServerFile.h"
#include "Support/TemporaryFolder.h"
#include "VorlentMozilla.h"

namespace vorlent::com {

// Refuses this thread's message boxes, which would wait for a user.
class NoMessageBoxes {
 public:
  NoMessageBoxes();
  NoMessageBoxes(const NoMessageBoxes&) = delete;
  NoMessageBoxes& operator=(const NoMessageBoxes&) = delete;
  ~NoMessageBoxes();

 private:
  HHOOK hook_;
};

// Another current folder of the process.
class CurrentFolder {
 public:
  explicit CurrentFolder(const std::string& path);
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;
  ~CurrentFolder();

 private:
  wchar_t before_[MAX_PATH];
};

// At its end nothing is held: neither the server by its callers nor the host by the component.
class HostedTest : public testing::Test {
 protected:
  HostedTest();
  void TearDown() override;

  ComPtr<IClassFactory> ClassObject(REFCLSID id) const;
  // Null if it can't be made.
  ComPtr<IDispatch> New(REFCLSID id) const;
  template <class Interface>
  ComPtr<Interface> New(REFCLSID id) const {
    ComPtr<Interface> seen;
    const ComPtr<IDispatch> made = New(id);
    if (made != nullptr) made.As(&seen);
    return seen;
  }

  Apartment apartment_;
  LoadedServer server_;
  TemporaryFolder folder_;
  std::unique_ptr<ScriptedHost> host_;
};

// With a copy of the sample profiles as the user's own.
class SampleTest : public HostedTest {
 protected:
  SampleTest();
  ~SampleTest() override;

  // The Windows path of a file in the profiles, such as "Thunderbird\profiles.ini".
  std::string Sample(const std::string& name) const { return folder_.Path("AppData\\" + name); }

  NoMessageBoxes noBoxes_;

 private:
  std::unique_ptr<CurrentFolder> current_;
  std::wstring appDataBefore_;
};

}  // namespace vorlent::com
