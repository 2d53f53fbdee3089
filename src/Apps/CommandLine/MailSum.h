// The closing account of a run over mails.
#pragma once

#include "Apps/CommandLine/Session.h"
#include "Standalone/Phrases.h"
#include "Standalone/RunTally.h"

namespace vorlent::app {

// Prints the sum, such as "found 9 = imported 8 + expunged 1 + failed 0", and each mail that failed or could
// not be marked as deleted with mailbox, offset and reason, and what can be done about it; `failure` is what
// ended the run, empty if it came to its end. The result is the run's exit code, that of nothing found if
// there was no mail at all. `alreadyThere` of those delivered were in the archive before, and are told by
// themselves.
ExitCode ShowSum(Session& session, const RunTally& tally, Phrase verb, const Cause& failure,
                 std::int64_t alreadyThere = 0);

}  // namespace vorlent::app
