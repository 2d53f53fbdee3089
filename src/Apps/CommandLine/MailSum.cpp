#include "Apps/CommandLine/MailSum.h"

#include <fmt/format.h>

#include <cstdio>

namespace vorlent::app {

ExitCode ShowSum(Session& session, const MailAccount& account, const std::string& verb,
                 const std::string& failure) {
  // The sum comes last, also where both outputs go to one place.
  std::fflush(stdout);
  for (const MailAccount::Failed& mail : account.failed) {
    session.Output().Complain(
        fmt::format("{}, mail at offset {}: {}", NativeShown(mail.mailbox), mail.offset, Shown(mail.reason)));
  }
  const bool told = session.ComplainOfErrors();
  const bool ofAMail = !account.failed.empty() && account.failed.back().reason == failure;
  if (!failure.empty() && !ofAMail) session.Output().Complain(Shown(failure));
  if (!failure.empty()) session.Output().Complain("the run ended before its time");
  session.Output().Say(fmt::format("found {} = {} {} + expunged {} + failed {}", account.Found(), verb,
                                   account.delivered, account.expunged, account.failed.size()));
  if (!failure.empty() && account.Found() == 0) return ExitCode::Unreadable;
  return failure.empty() && account.failed.empty() && !told ? ExitCode::Done : ExitCode::Partly;
}

}  // namespace vorlent::app
