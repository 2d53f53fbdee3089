// An import that moves mails, as the import command runs it.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Connectors/Mozilla/ImportCommand.h"
#include "Connectors/Mozilla/ImportRun.h"
#include "Platform/Failure.h"
#include "Standalone/Archive.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/StandaloneHost.h"

namespace vorlent {

// Moves the mailboxes into the archive, on a host of its own. What ended the run, "" if nothing did.
inline std::string MoveMails(std::vector<std::string> mailboxes, const std::string& archiveFolder,
                             ArchiveImport& import) {
  HostObserver nobody;
  const auto host = std::make_shared<StandaloneHost>(nobody);
  HostObjects::Install(host);
  std::string failure;
  try {
    ImportCommand command;
    command.target = archiveFolder;
    command.move = true;
    command.mailboxes = std::move(mailboxes);
    const ArchivePtr archive = host->Global().OpenArchive(command.target);
    ImportRun(command.Text(), &import).Run();
    archive->Close();
  } catch (const Failure& raised) {
    failure = raised.what();
  }
  HostObjects::Install(nullptr);
  return failure;
}

}  // namespace vorlent
