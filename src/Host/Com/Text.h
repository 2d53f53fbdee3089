// Text and values as automation holds them.
#pragma once

#include <concepts>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// As text is held inside, by the rules in force, and back. Where that is the code page, a character that it
// doesn't hold becomes '?', as the system does it.
std::string TextOf(std::wstring_view wide);
std::wstring WideOf(std::string_view text);

// UTF-8, as native paths are held, and back.
std::string Utf8Of(std::wstring_view wide);
std::wstring WideOfUtf8(std::string_view utf8);
inline std::string Utf8Of(BSTR text) {
  return Utf8Of(std::wstring_view(text == nullptr ? L"" : text, SysStringLen(text)));
}

// A text of automation; null is the empty one.
std::string TextOf(const OLECHAR* text, UINT length);
inline std::string TextOf(BSTR text) {
  return TextOf(text, SysStringLen(text));
}

// A new one, owned by the caller. Raises std::bad_alloc.
BSTR NewBstr(std::string_view text);

// A text of automation that is freed at its end.
class Bstr {
 public:
  explicit Bstr(std::string_view text) : text_(NewBstr(text)) {}
  // Raises std::bad_alloc.
  explicit Bstr(std::wstring_view wide)
      : text_(SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()))) {
    if (text_ == nullptr) throw std::bad_alloc();
  }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(text_); }

  BSTR Get() const { return text_; }

 private:
  BSTR text_;
};

// A value for the system's functions, which don't say that they only read it.
inline VARIANTARG* Readable(const VARIANT& value) {
  return const_cast<VARIANTARG*>(&value);
}

// A value that is cleared at its end.
class Value {
 public:
  Value() { VariantInit(&variant_); }
  explicit Value(std::string_view text) : Value() {
    variant_.bstrVal = NewBstr(text);
    variant_.vt = VT_BSTR;
  }
  // Of a bool alone: a literal text would be one, too.
  explicit Value(std::same_as<bool> auto truth) : Value() {
    variant_.vt = VT_BOOL;
    variant_.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
  }
  explicit Value(LONG number) : Value() {
    variant_.vt = VT_I4;
    variant_.lVal = number;
  }
  explicit Value(float number) : Value() {
    variant_.vt = VT_R4;
    variant_.fltVal = number;
  }
  // Shares the object; null is Nothing.
  explicit Value(IDispatch* object) : Value() {
    variant_.vt = VT_DISPATCH;
    variant_.pdispVal = object;
    if (object != nullptr) object->AddRef();
  }
  Value(Value&& other) noexcept : Value() { std::swap(variant_, other.variant_); }
  Value& operator=(Value&& other) noexcept {
    std::swap(variant_, other.variant_);
    return *this;
  }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  ~Value() { VariantClear(&variant_); }

  VARIANT* Place() { return &variant_; }
  VARIANT& operator*() { return variant_; }
  VARIANT* operator->() { return &variant_; }
  const VARIANT& Raw() const { return variant_; }

 private:
  VARIANT variant_;
};

}  // namespace vorlent::com
