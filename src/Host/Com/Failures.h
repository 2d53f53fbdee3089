// Failures as they cross the border of the component: statuses with a description beside them.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "Host/Com/WindowsApi.h"
#include "Platform/Failure.h"

namespace vorlent::com {

// The status of a failure: 0x800A0000 and the runtime's number. A number that is a status already, since a
// host or a database gave it, stays.
HRESULT StatusOf(const Failure& failure);

// The failure that a status of the other side stands for. `text` is its description; without one, the
// system's text of the status.
Failure FailureOf(HRESULT status, const std::string& text);
// The same with what comes beside the description where both sides are this project's: the file that the
// failure concerns, in place of a help file, and what can be done about it, in place of that file's page.
Failure FailureOf(HRESULT status, const std::string& text, const std::string& file, DWORD page);

// Notes for the caller what the status is about, and gives the status.
HRESULT Tell(HRESULT status, const Cause& why, REFIID interfaceId, std::wstring_view source);

// Tells a caller by name what was noted of a failed member, and gives the status of such a call.
HRESULT ExplainTo(EXCEPINFO* exception, HRESULT status);

// The failure of a call by vtable, with what the other side noted of it.
Failure ToldFailure(HRESULT status);

// Raises what a failed status stands for.
inline void Check(HRESULT status) {
  if (FAILED(status)) throw ToldFailure(status);
}

// A caller that gave no place for what it asks for.
class NoPlace : public std::exception {};

// What an argument by reference, or a result, points to.
template <class T>
T& At(T* place) {
  if (place == nullptr) throw NoPlace();
  return *place;
}

// Runs a member for a caller outside: nothing but a status leaves it.
template <class Step>
HRESULT Answer(REFIID interfaceId, std::wstring_view source, Step&& step) noexcept {
  try {
    SetErrorInfo(0, nullptr);
    std::forward<Step>(step)();
    return S_OK;
  } catch (const Failure& failure) {
    return Tell(StatusOf(failure), failure.Why(), interfaceId, source);
  } catch (const NoPlace&) {
    return E_POINTER;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    return Tell(E_FAIL, {.reason = error.what()}, interfaceId, source);
  }
}

}  // namespace vorlent::com
