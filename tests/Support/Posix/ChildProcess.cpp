#include "Support/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace vorlent {

std::optional<bool> WasKilledInCopy(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status);
}

}  // namespace vorlent
