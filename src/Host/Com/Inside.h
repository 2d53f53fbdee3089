// What a host of this project in the same process knows of the component, and is told by it, beyond the
// contract with all hosts. No type library describes it.
#pragma once

#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// Hears what becomes of the mails of a run, as vorlent::MailRunObserver.
struct IRunObserver : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE ImportBegins(IDispatch* target, VARIANT_BOOL moves) = 0;
  virtual HRESULT STDMETHODCALLTYPE MailsExpunged(LONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE MailDelivered(BSTR mailbox, LONGLONG offset, VARIANT_BOOL hidesPlace) = 0;
  virtual HRESULT STDMETHODCALLTYPE AttachmentUnmoved(BSTR key, BSTR path) = 0;
  virtual HRESULT STDMETHODCALLTYPE MailFailed(BSTR mailbox, LONGLONG offset, BSTR path, BSTR reason,
                                               LONG hint) = 0;
  virtual HRESULT STDMETHODCALLTYPE MarkingBegins(BSTR mailbox) = 0;
  virtual HRESULT STDMETHODCALLTYPE MailNotMarked(BSTR mailbox, LONGLONG offset, LONG why) = 0;
};

// Shows message boxes, as vorlent::Platform.
struct IMessages : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE ShowMessage(BSTR text, BSTR title, LONG icon, LONG buttons,
                                                LONG* answer) = 0;
};

// Met by the component's class objects.
struct IInside : IUnknown {
  // As the functions of Platform/Settings.h.
  virtual HRESULT STDMETHODCALLTYPE SetDrive(WCHAR letter, BSTR folder) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetAppDataFolder(BSTR folder) = 0;
  // Null goes back to the system's own boxes.
  virtual HRESULT STDMETHODCALLTYPE ShowMessagesBy(IMessages* messages) = 0;
  // Who hears of the runs of a mail connector or of the actions, until null is given.
  virtual HRESULT STDMETHODCALLTYPE Observe(IDispatch* object, IRunObserver* observer) = 0;
  // A member of a connector that the contract with all hosts doesn't have, by its name, with its argument.
  virtual HRESULT STDMETHODCALLTYPE Ask(IDispatch* object, BSTR question, BSTR given, VARIANT* result) = 0;
};

}  // namespace vorlent::com

__CRT_UUID_DECL(vorlent::com::IRunObserver, 0x2d1e0a54, 0x7c3b, 0x4f0e, 0x9a, 0x66, 0x0b, 0x5e, 0x41, 0x7d,
                0x93, 0x28)
__CRT_UUID_DECL(vorlent::com::IMessages, 0x8f6b3c19, 0x52da, 0x4b7e, 0x8e, 0x10, 0xc4, 0x7a, 0x2e, 0x95, 0x06,
                0xd3)
__CRT_UUID_DECL(vorlent::com::IInside, 0xe37a9d02, 0x1b48, 0x4c6d, 0xb5, 0x21, 0x6f, 0xd0, 0x83, 0x1c, 0xa7,
                0x4e)
