#include "Support/ForeignLock.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <stdexcept>
#include <string>

#include "Support/SqliteFile.h"

namespace vorlent {

namespace {

// What the other process does: nothing else of the test program may run in it.
[[noreturn]] void HoldLock(const std::filesystem::path& native, int milliseconds, int ready) {
  try {
    SqliteFile file(native);
    file.Run("BEGIN EXCLUSIVE");
    if (write(ready, "+", 1) == 1) usleep(static_cast<useconds_t>(milliseconds) * 1000);
  } catch (const std::exception&) {
    // The pipe closes without a mark, which tells the test.
  }
  _exit(0);
}

}  // namespace

ForeignLock::ForeignLock(const std::filesystem::path& native, int milliseconds) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  process_ = fork();
  if (process_ == 0) {
    close(ends[0]);
    HoldLock(native, milliseconds, ends[1]);
  }
  close(ends[1]);
  char mark = 0;
  const bool locked = process_ > 0 && read(ends[0], &mark, 1) == 1;
  close(ends[0]);
  if (!locked) throw std::runtime_error("can't lock " + native.string());
}

ForeignLock::~ForeignLock() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace vorlent
