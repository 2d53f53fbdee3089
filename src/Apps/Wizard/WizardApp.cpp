#include "Apps/Wizard/WizardApp.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QMessageBox>
#include <QTimer>
#include <QTranslator>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "Apps/ExitCodes.h"
#include "Apps/Wizard/Guarded.h"
#include "Apps/Wizard/ImportProgress.h"
#include "Apps/Wizard/QtDialogs.h"
#include "Apps/Wizard/QtPlatform.h"
#include "Apps/Wizard/QtText.h"
#include "Platform/AtEnd.h"
#include "Platform/NativePaths.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/InstalledHost.h"
#include "Standalone/Phrases.h"
#include "Standalone/StandaloneHost.h"

namespace vorlent {

namespace {

constexpr int kEndPause = 100;  // milliseconds between two looks whether the program shall end

using app::ExitCode;

// Qt ends the process when it can't reach a display; this has the last word.
void SayThatThereIsNoDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type != QtFatalMsg) return;
  std::fprintf(stderr,
               "vorlent-mozilla: %s\n%s\n"
               "  vorlent-mozilla browse 'thunderbird://*'\n"
               "  vorlent-mozilla import --target ARCHIVE ADDRESS\n",
               InWords(Phrase::NoDisplay).c_str(), InWords(Phrase::WithoutDisplay).c_str());
  std::_Exit(static_cast<int>(ExitCode::Usage));
}

// The application, unless the process has one. Qt's own texts are in the windows' language while this lives.
class Application {
 public:
  Application() {
    if (QCoreApplication::instance() == nullptr) MakeOwn();
    // Without the package of Qt's translations its texts stay English.
    if (FormLanguage() == Language::German &&
        german_.load("qtbase_de", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
      QCoreApplication::installTranslator(&german_);
    }
  }

 private:
  void MakeOwn() {
    const AtEnd putBack(
        [before = qInstallMessageHandler(SayThatThereIsNoDisplay)] { qInstallMessageHandler(before); });
    own_.emplace(argc_, argv_);
  }

  int argc_ = 1;
  char name_[16] = "vorlent-mozilla";
  char* argv_[2] = {name_, nullptr};
  std::optional<QApplication> own_;
  QTranslator german_;
};

// The wizard with a host of its own, which stands in for the one installed while this lives.
class WizardProgram {
 public:
  explicit WizardProgram(const WizardAppOptions& options)
      : progress_([this]() -> std::atomic<bool>& { return host_->Global().CancelFlag(); }, nullptr),
        host_(std::make_shared<StandaloneHost>(progress_)),
        installed_(std::make_shared<wizard::QtPlatform>(), host_) {
    host_->SetDialogs(
        std::make_shared<wizard::QtDialogs>([this](const std::string& folder) { return OpenTarget(folder); },
                                            [this](const std::string&) { Prepare(); }));
    if (!options.isToEnd) return;
    QObject::connect(&endTimer_, &QTimer::timeout, [this, isToEnd = options.isToEnd] {
      wizard::Guarded(nullptr, [&] {
        if (isToEnd()) End();
      });
    });
    endTimer_.start(kEndPause);
  }

  // Opens the archive in a folder, which is offered from then on.
  std::string OpenTarget(const std::string& folder) { return host_->Global().OpenArchive(folder)->Name(); }

  // After a run that failed the user may go back to the pages, where all is still as it was chosen.
  ExitCode Run() {
    bool failedBefore = false;
    while (true) {
      finished_ = false;
      const Cause failure = RunAction();
      if (!finished_ && failure.IsEmpty()) return failedBefore ? ExitCode::Partly : ExitCode::Cancelled;
      failedBefore = true;
      // The run told already that its target can't be opened.
      const bool hasNoTarget = !progress_.WasOpened() && failure.IsEmpty();
      if (!hasNoTarget && !ShowResult(failure)) return exitCode_;
    }
  }

 private:
  void Prepare() {
    finished_ = true;
    // A failure of the run before may have left them so.
    host_->Global().CancelFlag() = false;
    host_->Global().SetLogEnabled(true);
  }

  // The run sees the flag after its mail. A window that opens later is closed by the next tick.
  void End() {
    host_->Global().CancelFlag() = true;
    QApplication::closeAllWindows();
  }

  // What failed; empty if nothing did.
  Cause RunAction() {
    progress_.Watch(&import_.emplace());
    try {
      import_->Run();
    } catch (const Failure& failure) {
      return failure.Why();
    }
    return {};
  }

  // Whether the user wants to go back to the pages.
  bool ShowResult(const Cause& failure) {
    const bool wantsBack = progress_.ShowResult(*import_, failure);
    const bool failed = !failure.IsEmpty() || !import_->Failed().empty() || !import_->Unmarked().empty();
    exitCode_ = failed                        ? ExitCode::Partly
                : host_->Global().Cancelled() ? ExitCode::Cancelled
                                              : ExitCode::Done;
    return wantsBack;
  }

  wizard::ImportProgress progress_;
  std::shared_ptr<StandaloneHost> host_;
  InstalledHost installed_;
  std::optional<ArchiveImport> import_;  // the present or last one
  bool finished_ = false;                // the wizard, with a command
  ExitCode exitCode_ = ExitCode::Done;
  QTimer endTimer_;
};

}  // namespace

int RunWizardApp(const WizardAppOptions& options) {
  const Application application;
  WizardProgram program(options);
  try {
    for (const std::string& folder : options.archives)
      program.OpenTarget(os::ToWindowsPath(folder));
  } catch (const Failure& failure) {
    std::fprintf(stderr, "vorlent-mozilla: %s\n", wizard::ShownCause(failure.Why()).toUtf8().constData());
    if (const std::string_view hint = InWords(failure.Why().hint); !hint.empty())
      std::fprintf(stderr, "%s\n", std::string(hint).c_str());
    return static_cast<int>(ExitCode::Unreadable);
  }
  return static_cast<int>(program.Run());
}

}  // namespace vorlent
