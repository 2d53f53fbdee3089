#include "Platform/Guid.h"

#include <errno.h>
#include <sys/random.h>

#include <cstring>
#include <string>

#include "Platform/Failure.h"

namespace vorlent::os {

std::array<std::uint8_t, 16> NewGuidBytes() {
  std::array<std::uint8_t, 16> bytes;
  // So few bytes come in one piece, and no signal interrupts the call once the system has started up.
  ssize_t count;
  do {
    count = getrandom(bytes.data(), bytes.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count != static_cast<ssize_t>(bytes.size())) {
    throw Failure(ErrorNumber::DeviceIo, std::string("no random numbers: ") + std::strerror(errno));
  }
  // RFC 4122: the upper four bits of byte 6 are the version, the upper two of byte 8 are binary 10.
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
  return bytes;
}

}  // namespace vorlent::os
