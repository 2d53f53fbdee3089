#include "Platform/Guid.h"

#include <windows.h>

#include <objbase.h>

#include "Platform/Failure.h"

namespace vorlent::os {

namespace {

// The bytes of a number, the highest first, as they stand in the text form.
template <class Number>
std::uint8_t* PutBytes(std::uint8_t* out, Number number) {
  for (int i = sizeof number - 1; i >= 0; --i)
    *out++ = static_cast<std::uint8_t>(number >> 8 * i);
  return out;
}

}  // namespace

std::array<std::uint8_t, 16> NewGuidBytes() {
  GUID guid;
  if (CoCreateGuid(&guid) != S_OK) throw Failure(ErrorNumber::DeviceIo, "no new GUID");
  std::array<std::uint8_t, 16> bytes;
  std::uint8_t* out = PutBytes(bytes.data(), guid.Data1);
  out = PutBytes(out, guid.Data2);
  out = PutBytes(out, guid.Data3);
  for (const std::uint8_t byte : guid.Data4)
    *out++ = byte;
  return bytes;
}

}  // namespace vorlent::os
