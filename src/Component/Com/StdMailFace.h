// The face of the mail reader.
#pragma once

#include <memory>

#include "Common/Width.h"
#include "Component/Com/Face.h"
#include "Connectors/Mozilla/StdMail.h"
#include "VorlentMozilla.h"  // made of the IDL file

namespace vorlent::com {

class StdMailFace final : public Face<_StdMail, StdMail> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_MailboxFile(BSTR* result) override {
    return Do([&] { Give(Native().MailboxFile(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_MailboxFile(BSTR rhs) override {
    return Do([&] { Native().SetMailboxFile(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Headers(IDispatch** result) override {
    return GiveList(&StdMail::Headers, result);
  }
  HRESULT STDMETHODCALLTYPE putref_Headers(IDispatch* rhs) override {
    return Do([&] { Native().SetHeaders(ListBehind(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_BodyLines(IDispatch** result) override {
    return GiveList(&StdMail::BodyLines, result);
  }
  HRESULT STDMETHODCALLTYPE putref_BodyLines(IDispatch* rhs) override {
    return Do([&] { Native().SetBodyLines(ListOrNew(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Attachments(IDispatch** result) override {
    return GiveList(&StdMail::Attachments, result);
  }
  HRESULT STDMETHODCALLTYPE putref_Attachments(IDispatch* rhs) override {
    return Do([&] { Native().SetAttachments(ListOrNew(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Percent(double* result) override {
    return Do([&] { At(result) = Native().Percent(); });
  }
  HRESULT STDMETHODCALLTYPE put_Percent(double rhs) override {
    return Do([&] { Native().SetPercent(rhs); });
  }
  HRESULT STDMETHODCALLTYPE get_LineCount(LONG* result) override {
    return Do([&] { At(result) = ToInt32(Native().LineCount()); });
  }
  HRESULT STDMETHODCALLTYPE put_LineCount(LONG rhs) override {
    return Do([&] { Native().SetLineCount(rhs); });
  }
  HRESULT STDMETHODCALLTYPE get_ReadCount(double* result) override {
    return Do([&] { At(result) = Native().ReadCount(); });
  }
  HRESULT STDMETHODCALLTYPE put_ReadCount(double rhs) override {
    return Do([&] { Native().SetReadCount(rhs); });
  }
  HRESULT STDMETHODCALLTYPE get_hasHTML(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().hasHTML(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_hasHTML(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SethasHTML(rhs != VARIANT_FALSE); });
  }
  HRESULT STDMETHODCALLTYPE get_mailtmppfad(BSTR* result) override {
    return Do([&] { Give(Native().mailtmppfad(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_mailtmppfad(BSTR rhs) override {
    return Do([&] { Native().Setmailtmppfad(TextOf(rhs)); });
  }

  HRESULT STDMETHODCALLTYPE GetHeader(BSTR* key, VARIANT_BOOL* all, BSTR* result) override {
    return Do([&] { Give(Native().GetHeader(Given(key), Given(all)), result); });
  }
  HRESULT STDMETHODCALLTYPE GetAllHeaders(BSTR* result) override {
    return Do([&] { Give(Native().GetAllHeaders(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Body(BSTR* result) override {
    return Do([&] { Give(Native().Body(), result); });
  }
  HRESULT STDMETHODCALLTYPE InitStream(SHORT* saveflag) override {
    return Do([&] { Native().InitStream(At(saveflag)); });
  }
  HRESULT STDMETHODCALLTYPE ReadHeader(VARIANT_BOOL* saveattachments, VARIANT_BOOL* waitforfrom,
                                       VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().ReadHeader(Given(saveattachments), Given(waitforfrom)), result); });
  }
  HRESULT STDMETHODCALLTYPE ReadStream(BSTR* bodyfile, VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().ReadStream(Given(bodyfile)), result); });
  }
  HRESULT STDMETHODCALLTYPE SaveMail(BSTR* file, BSTR* bodyfile) override {
    return Do([&] { Native().SaveMail(Given(file), Given(bodyfile)); });
  }
  HRESULT STDMETHODCALLTYPE GetDate(BSTR* result) override {
    return Do([&] { Give(Native().GetDate(), result); });
  }
  HRESULT STDMETHODCALLTYPE Delete(BSTR* file) override {
    return Do([&] { Native().Delete(Given(file)); });
  }
  HRESULT STDMETHODCALLTYPE CloseStream() override {
    return Do([&] { Native().CloseStream(); });
  }
  HRESULT STDMETHODCALLTYPE SaveAttachmentFile(BSTR* file, LONG* offset, SHORT* attach, BSTR* dat) override {
    return Do([&] { Native().SaveAttachmentFile(Given(file), At(offset), At(attach), Given(dat)); });
  }
  HRESULT STDMETHODCALLTYPE DeleteMail(LONG* offset) override {
    return Do([&] { Native().DeleteMail(At(offset)); });
  }
  HRESULT STDMETHODCALLTYPE GetData(BSTR* kw, VARIANT_BOOL* saveattachments, BSTR* result) override {
    return Do([&] { Give(Native().GetData(Given(kw), Given(saveattachments)), result); });
  }
  HRESULT STDMETHODCALLTYPE GetFileInfo(BSTR* file, BSTR* result) override {
    return Do([&] { Give(Native().GetFileInfo(Given(file)), result); });
  }
  HRESULT STDMETHODCALLTYPE DeleteLastTempfiles() override {
    return Do([&] { Native().DeleteLastTempfiles(); });
  }
  HRESULT STDMETHODCALLTYPE AddTempfile(BSTR* file) override {
    return Do([&] { Native().AddTempfile(Given(file)); });
  }
  HRESULT STDMETHODCALLTYPE AddHeader(BSTR* a) override {
    return Do([&] { Native().AddHeader(Given(a)); });
  }

 private:
  HRESULT GiveList(const StdMail::TextListPtr& (StdMail::*get)() const, IDispatch** result) {
    return Do([&] {
      At(result) = nullptr;
      *result = ExposeList((Native().*get)()).Detach();
    });
  }

  // These lists come into being again when they are let go of.
  static StdMail::TextListPtr ListOrNew(IDispatch* list) {
    return list == nullptr ? std::make_shared<TextList>() : ListBehind(list);
  }
};

}  // namespace vorlent::com
