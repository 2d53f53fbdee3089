#include "Apps/CommandLine/RegisteredComponent.h"

#include <optional>
#include <utility>

#include "Apps/CommandLine/AppError.h"
#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"
#include "Platform/Platform.h"
#include "Standalone/Com/HostServer.h"
#include "Standalone/Com/ServedComponent.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

class Apartment {
 public:
  Apartment() { com::Check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
  // What the component holds of the host goes with it.
  ~Apartment() {
    CoFreeUnusedLibrariesEx(0, 0);
    CoUninitialize();
  }
};

class PlatformMessages final : public com::Counted<com::IMessages> {
 public:
  HRESULT STDMETHODCALLTYPE ShowMessage(BSTR text, BSTR title, LONG icon, LONG buttons,
                                        LONG* answer) override {
    return com::Answer(__uuidof(com::IMessages), L"Vorlent", [&] {
      com::At(answer) = static_cast<LONG>(Platform::Current().ShowMessage(
          com::TextOf(text), com::TextOf(title), static_cast<MessageIcon>(icon),
          static_cast<MessageButtons>(buttons)));
    });
  }
};

class ServedByCom final : public RegisteredComponent {
 public:
  ServedByCom(const std::shared_ptr<StandaloneHost>& host, const ComponentSettings& settings)
      : server_(std::in_place, host), host_(host), component_(std::in_place) {
    for (const std::string& drive : settings.drives) {
      const com::Bstr folder(com::WideOfUtf8(drive.substr(2)));
      com::Check(component_->Inside().SetDrive(static_cast<WCHAR>(drive[0]), folder.Get()));
    }
    if (!settings.appData.empty()) {
      const com::Bstr folder(com::WideOfUtf8(settings.appData));
      com::Check(component_->Inside().SetAppDataFolder(folder.Get()));
    }
    const auto messages = com::Taken<com::IMessages>(new PlatformMessages);
    com::Check(component_->Inside().ShowMessagesBy(messages.Get()));
    host_->Global().SetConnectorFactory(
        [this](std::string_view progId) { return component_->Create(progId); });
  }

  // Location and connector hold each other until the one is closed.
  ~ServedByCom() override {
    for (const LocationPtr& location : host_->Global().Locations())
      Swallow([&] { location->Close(); });
    host_->Global().SetConnectorFactory(nullptr);
    component_->Inside().ShowMessagesBy(nullptr);
    component_.reset();
    server_.reset();
  }

 private:
  Apartment apartment_;
  std::optional<com::HostServer> server_;
  std::shared_ptr<StandaloneHost> host_;
  std::optional<com::ServedComponent> component_;
};

}  // namespace

std::unique_ptr<RegisteredComponent> UseRegisteredComponent(const std::shared_ptr<StandaloneHost>& host,
                                                            const ComponentSettings& settings) {
  try {
    return std::make_unique<ServedByCom>(host, settings);
  } catch (const Failure& failure) {
    throw AppError(ExitCode::Usage, InWords(Phrase::NotRegistered, {failure.what()}),
                   InWords(Phrase::RegisterIt));
  }
}

}  // namespace vorlent::app
