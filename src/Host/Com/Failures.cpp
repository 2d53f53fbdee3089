#include "Host/Com/Failures.h"

#include <iterator>

#include "Host/Com/Text.h"

namespace vorlent::com {

namespace {

constexpr HRESULT kRuntime = static_cast<HRESULT>(0x800A0000);
constexpr int kLastRuntimeNumber = 0xFFFF;

// What the runtime makes of the system's own statuses.
struct Known {
  HRESULT status;
  int number;
};

constexpr Known kKnown[] = {
    {E_OUTOFMEMORY, 7},        {E_INVALIDARG, 5},
    {E_NOTIMPL, 445},          {E_NOINTERFACE, 430},
    {DISP_E_TYPEMISMATCH, 13}, {DISP_E_OVERFLOW, 6},
    {DISP_E_BADINDEX, 9},      {DISP_E_MEMBERNOTFOUND, 438},
    {DISP_E_UNKNOWNNAME, 438}, {DISP_E_BADPARAMCOUNT, 450},
    {DISP_E_NONAMEDARGS, 446}, {DISP_E_PARAMNOTOPTIONAL, 449},
    {CO_E_CLASSSTRING, 429},   {REGDB_E_CLASSNOTREG, 429},
};

int NumberOf(HRESULT status) {
  if (HRESULT_FACILITY(status) == FACILITY_CONTROL) return HRESULT_CODE(status);
  for (const Known& known : kKnown) {
    if (known.status == status) return known.number;
  }
  return status;
}

std::string SystemText(HRESULT status) {
  wchar_t text[512];
  DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                static_cast<DWORD>(status), 0, text, std::size(text), nullptr);
  while (length > 0 && text[length - 1] <= L' ')
    --length;
  if (length > 0) return TextOf(std::wstring_view(text, length));
  return "automation error " + std::to_string(status);
}

}  // namespace

HRESULT StatusOf(const Failure& failure) {
  const int number = failure.Number();
  if (number < 0) return number;
  return kRuntime | (number <= kLastRuntimeNumber ? number : static_cast<int>(ErrorNumber::Host));
}

Failure FailureOf(HRESULT status, const std::string& text) {
  return {NumberOf(status), text.empty() ? SystemText(status) : text};
}

Failure FailureOf(HRESULT status, const std::string& text, const std::string& file, DWORD page) {
  // A help file that a host has isn't part of what it says.
  const bool isConcerned = !file.empty() && text.starts_with(file + ": ");
  if (!isConcerned) return FailureOf(status, text);
  return {NumberOf(status), Cause{file, text.substr(file.size() + 2), static_cast<Hint>(page)}};
}

HRESULT Tell(HRESULT status, const Cause& why, REFIID interfaceId, std::wstring_view source) {
  ComPtr<ICreateErrorInfo> note;
  if (FAILED(CreateErrorInfo(&note))) return status;
  note->SetGUID(interfaceId);
  note->SetSource(std::wstring(source).data());
  note->SetDescription(WideOf(why.Text()).data());
  if (!why.path.empty()) {
    note->SetHelpFile(WideOf(why.path).data());
    note->SetHelpContext(static_cast<DWORD>(why.hint));
  }
  ComPtr<IErrorInfo> info;
  if (SUCCEEDED(note.As(&info))) SetErrorInfo(0, info.Get());
  return status;
}

HRESULT ExplainTo(EXCEPINFO* exception, HRESULT status) {
  ComPtr<IErrorInfo> info;
  const bool isNoted = GetErrorInfo(0, &info) == S_OK;
  if (exception == nullptr) return DISP_E_EXCEPTION;
  *exception = {};
  exception->scode = status;
  if (isNoted) {
    info->GetDescription(&exception->bstrDescription);
    info->GetSource(&exception->bstrSource);
    info->GetHelpFile(&exception->bstrHelpFile);
    info->GetHelpContext(&exception->dwHelpContext);
  }
  return DISP_E_EXCEPTION;
}

Failure ToldFailure(HRESULT status) {
  ComPtr<IErrorInfo> info;
  if (GetErrorInfo(0, &info) != S_OK) return FailureOf(status, {});
  BSTR text = nullptr, file = nullptr;
  DWORD page = 0;
  info->GetDescription(&text);
  info->GetHelpFile(&file);
  info->GetHelpContext(&page);
  Failure failure = FailureOf(status, TextOf(text), TextOf(file), page);
  SysFreeString(text);
  SysFreeString(file);
  return failure;
}

}  // namespace vorlent::com
