#include "Apps/Wizard/WizardApp.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QMessageBox>
#include <QTranslator>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "Apps/Wizard/ImportProgress.h"
#include "Apps/Wizard/QtDialogs.h"
#include "Apps/Wizard/QtPlatform.h"
#include "Apps/Wizard/QtText.h"
#include "Component/Component.h"
#include "Connectors/Mozilla/ImportCommand.h"
#include "Connectors/Mozilla/ImportRun.h"
#include "Platform/CodePage.h"
#include "Platform/Posix/PathMapping.h"
#include "Standalone/StandaloneHost.h"

namespace vorlent {

namespace {

enum ExitCode { kDone = 0, kFailed = 1, kNoDisplay = 2, kUnreadable = 3, kCancelled = 130 };

// Qt ends the process when it can't reach a display; this has the last word.
void SayThatThereIsNoDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type != QtFatalMsg) return;
  std::fputs(
      "vorlent-mozilla: the wizard needs a display, and there is none.\n"
      "Without one, list the mail folders and import them by name:\n"
      "  vorlent-mozilla browse 'thunderbird://*'\n"
      "  vorlent-mozilla import --target ARCHIVE ADDRESS\n",
      stderr);
  std::_Exit(kNoDisplay);
}

// The application, unless the process has one.
class Application {
 public:
  Application() {
    if (QCoreApplication::instance() != nullptr) return;
    const QtMessageHandler before = qInstallMessageHandler(SayThatThereIsNoDisplay);
    own_.emplace(argc_, argv_);
    qInstallMessageHandler(before);
    if (german_.load("qtbase_de", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
      QCoreApplication::installTranslator(&german_);
    }
  }

 private:
  int argc_ = 1;
  char name_[16] = "vorlent-mozilla";
  char* argv_[2] = {name_, nullptr};
  std::optional<QApplication> own_;
  QTranslator german_;
};

// Puts back what was there before.
class Installed {
 public:
  Installed(std::shared_ptr<Platform> platform, std::shared_ptr<HostObjects> host)
      : platform_(Platform::Install(std::move(platform))), host_(HostObjects::Install(std::move(host))) {}
  ~Installed() {
    HostObjects::Install(host_);
    Platform::Install(platform_);
  }

 private:
  std::shared_ptr<Platform> platform_;
  std::shared_ptr<HostObjects> host_;
};

}  // namespace

int RunWizardApp(const WizardAppOptions& options) {
  const Application application;
  std::shared_ptr<StandaloneHost> host;
  wizard::ImportProgress progress([&]() -> std::atomic<bool>& { return host->Global().CancelFlag(); },
                                  nullptr);
  host = std::make_shared<StandaloneHost>(progress);
  const Installed installed(std::make_shared<wizard::QtPlatform>(), host);

  const auto openTarget = [&](const std::string& folder) {
    return host->Global().OpenArchive(folder)->Name();
  };
  // Mails that stay in their mailbox need not be safe one by one.
  std::optional<Archive::Portions> portions;
  bool wizardFinished = false;
  const auto prepare = [&](const std::string& text) {
    wizardFinished = true;
    const ImportCommand command = ImportCommand::Parse(text);
    const auto archive = std::dynamic_pointer_cast<Archive>(host->Global().GetObject(command.target));
    if (archive != nullptr && !command.move) portions.emplace(*archive);
  };
  host->SetDialogs(std::make_shared<wizard::QtDialogs>(openTarget, prepare));
  try {
    for (const std::string& folder : options.archives)
      openTarget(os::ToWindowsPath(folder));
  } catch (const Failure& failure) {
    std::fprintf(stderr, "vorlent-mozilla: %s\n", DisplayUtf8(failure.what()).c_str());
    return kUnreadable;
  }

  QString failed;
  try {
    RequireAs<ActionList>(CreateObject("VorlentMozilla.Actions"))->execute("importmails");
    if (portions) portions->Finish();
  } catch (const Failure& failure) {
    failed = wizard::WithNativePaths(failure.what());
  }
  if (!progress.WasOpened() && failed.isEmpty()) return wizardFinished ? kFailed : kCancelled;
  const MailAccount& account = ImportRun::LastAccount();
  progress.ShowResult(account, failed);
  if (!failed.isEmpty() || !account.failed.empty() || !account.unmarked.empty()) return kFailed;
  return host->Global().Cancelled() ? kCancelled : kDone;
}

}  // namespace vorlent
