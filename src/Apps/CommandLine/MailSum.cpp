#include "Apps/CommandLine/MailSum.h"

#include <fmt/format.h>

#include <cstdio>

namespace vorlent::app {

namespace {

void ComplainOf(Session& session, const std::vector<MailAccount::Failed>& mails, std::string_view outcome) {
  for (const MailAccount::Failed& mail : mails) {
    session.Output().Complain(fmt::format("{}, mail at offset {}: {}{}", NativeShown(mail.mailbox),
                                          mail.offset, outcome, FailureShown(mail.reason)));
  }
}

}  // namespace

ExitCode ShowSum(Session& session, const MailAccount& account, const std::string& verb,
                 const std::string& failure) {
  // The sum comes last, also where both outputs go to one place.
  std::fflush(stdout);
  ComplainOf(session, account.failed, "");
  ComplainOf(session, account.unmarked, "not marked as deleted: ");
  const bool told = session.ComplainOfErrors();
  const bool ofAMail = !account.failed.empty() && account.failed.back().reason == failure;
  if (!failure.empty() && !ofAMail) session.Output().Complain(FailureShown(failure));
  if (!failure.empty()) session.Output().Complain("the run ended before its time");
  std::string sum = fmt::format("found {} = {} {} + expunged {} + failed {}", account.Found(), verb,
                                account.delivered, account.expunged, account.failed.size());
  if (!account.unmarked.empty()) sum += fmt::format(", not marked as deleted {}", account.unmarked.size());
  session.Output().Say(sum);
  if (account.Found() == 0) return failure.empty() ? ExitCode::Partly : ExitCode::Unreadable;
  const bool isWhole = failure.empty() && account.failed.empty() && account.unmarked.empty() && !told;
  return isWhole ? ExitCode::Done : ExitCode::Partly;
}

}  // namespace vorlent::app
