#include "Apps/CommandLine/MailSum.h"

#include <fmt/format.h>

#include <cstdio>

namespace vorlent::app {

namespace {

void ComplainOf(Session& session, const MailPlace& mail, const std::string& outcome) {
  session.Output().Complain(
      fmt::format("{}, mail at offset {}: {}", NativeShown(mail.mailbox), mail.offset, outcome));
}

}  // namespace

ExitCode ShowSum(Session& session, const RunTally& tally, const std::string& verb, const std::string& failure,
                 std::int64_t alreadyThere) {
  // The sum comes last, also where both outputs go to one place.
  std::fflush(stdout);
  for (const auto& [mail, reason] : tally.Failed())
    ComplainOf(session, mail, FailureShown(reason));
  for (const auto& [mail, why] : tally.Unmarked())
    ComplainOf(session, mail, "not marked as deleted: " + std::string(ReasonOf(why)));
  const bool told = session.ComplainOfErrors();
  const bool ofAMail = !tally.Failed().empty() && tally.Failed().back().reason == failure;
  if (!failure.empty() && !ofAMail) session.Output().Complain(FailureShown(failure));
  if (!failure.empty()) session.Output().Complain("the run ended before its time");
  const std::string there = alreadyThere == 0 ? "" : fmt::format("already there {} + ", alreadyThere);
  std::string sum =
      fmt::format("found {} = {} {} + {}expunged {} + failed {}", tally.Found(), verb,
                  tally.Delivered() - alreadyThere, there, tally.Expunged(), tally.Failed().size());
  if (!tally.Unmarked().empty()) sum += fmt::format(", not marked as deleted {}", tally.Unmarked().size());
  session.Output().Say(sum);
  if (tally.Found() == 0) return failure.empty() ? ExitCode::Partly : ExitCode::Unreadable;
  const bool isWhole = failure.empty() && tally.Failed().empty() && tally.Unmarked().empty() && !told;
  return isWhole ? ExitCode::Done : ExitCode::Partly;
}

}  // namespace vorlent::app
