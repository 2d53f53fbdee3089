// A list of texts as a collection.
#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string>
#include <utility>

#include "Component/Com/Counted.h"
#include "Component/Com/Faces.h"
#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"

namespace vorlent::com {

namespace {

using TextListPtr = std::shared_ptr<TextList>;

// The members, by the identifiers that collections have everywhere.
struct MemberName {
  const wchar_t* name;
  DISPID id;
};
constexpr DISPID kItem = DISPID_VALUE, kAdd = 1, kCount = 2, kRemove = 3;
constexpr MemberName kMembers[] = {{L"Item", kItem},
                                   {L"Add", kAdd},
                                   {L"Count", kCount},
                                   {L"Remove", kRemove},
                                   {L"_NewEnum", DISPID_NEWENUM}};

// Walks a list as it is at each step, so that one that changes meanwhile harms nobody.
class Enumeration final : public Counted<IEnumVARIANT> {
 public:
  Enumeration(TextListPtr list, std::int32_t passed) : list_(std::move(list)), passed_(passed) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* entries, ULONG* fetched) override {
    ULONG given = 0;
    const HRESULT status = Answer(IID_IEnumVARIANT, L"", [&] {
      for (; given < count && Left() > 0; ++given) {
        VARIANT& entry = At(entries + given);
        VariantInit(&entry);
        entry.bstrVal = NewBstr(list_->Item(passed_ + 1));
        entry.vt = VT_BSTR;
        ++passed_;
      }
    });
    if (fetched != nullptr) *fetched = given;
    if (FAILED(status)) return status;
    return given == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const auto left = static_cast<ULONG>(Left());
    passed_ += static_cast<std::int32_t>(std::min(count, left));
    return count <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    passed_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** result) override {
    return Answer(IID_IEnumVARIANT, L"", [&] { At(result) = new Enumeration(list_, passed_); });
  }

 protected:
  void LetGo() override { list_ = nullptr; }

 private:
  std::int32_t Left() const { return list_ == nullptr ? 0 : std::max(list_->Count() - passed_, 0); }

  TextListPtr list_;
  std::int32_t passed_;
};

// The caller's arguments in their order, each without its references.
class Arguments {
 public:
  explicit Arguments(const DISPPARAMS& given) : given_(given) {}

  bool AreBetween(UINT least, UINT most) const { return given_.cArgs >= least && given_.cArgs <= most; }
  bool Has(UINT index) const {
    return index < given_.cArgs && !(Raw(index).vt == VT_ERROR && Raw(index).scode == DISP_E_PARAMNOTFOUND);
  }
  Value At(UINT index) const {
    Value plain;
    Check(VariantCopyInd(plain.Place(), &Raw(index)));
    return plain;
  }
  std::string Text(UINT index) const {
    Value text;
    const HRESULT status = VariantChangeType(text.Place(), &Raw(index), 0, VT_BSTR);
    if (FAILED(status)) throw FailureOf(status, {});
    return TextOf(text->bstrVal);
  }

 private:
  VARIANT& Raw(UINT index) const { return given_.rgvarg[given_.cArgs - 1 - index]; }

  const DISPPARAMS& given_;
};

// Runs a step with the place of an entry: its key for a text, its position for a number.
template <class Step>
auto WithPlace(const Arguments& arguments, Step&& step) {
  Value place = arguments.At(0);
  if (place->vt == VT_BSTR) return step(std::string_view(TextOf(place->bstrVal)));
  const HRESULT status = VariantChangeType(place.Place(), place.Place(), 0, VT_I4);
  if (FAILED(status)) throw FailureOf(status, {});
  return step(std::int32_t{place->lVal});
}

class Collection final : public Counted<IDispatch, ISupportErrorInfo> {
 public:
  explicit Collection(TextListPtr list) : list_(std::move(list)) {
    FaceList<TextList>::Current().Add(list_, this);
  }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return DISP_E_BADINDEX; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    if (names == nullptr || ids == nullptr) return E_POINTER;
    std::fill_n(ids, count, DISPID_UNKNOWN);
    for (const MemberName& member : kMembers) {
      if (count > 0 && _wcsicmp(member.name, names[0]) == 0) ids[0] = member.id;
    }
    return count == 1 && ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT* result,
                                   EXCEPINFO* exception, UINT*) override {
    if (given == nullptr) return E_POINTER;
    if (given->cNamedArgs > 0) return DISP_E_NONAMEDARGS;
    if (list_ == nullptr) return CO_E_OBJNOTCONNECTED;
    const Running running(*this);
    const Arguments arguments(*given);
    HRESULT refused = S_OK;
    Value outcome;
    const HRESULT status =
        Answer(IID_IDispatch, L"VorlentMozilla", [&] { refused = Run(id, arguments, outcome); });
    if (FAILED(refused)) return refused;
    if (FAILED(status)) return ExplainTo(exception, status);
    if (result != nullptr) *result = std::exchange(*outcome, VARIANT{});
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) override {
    return IsEqualIID(id, IID_IDispatch) ? S_OK : S_FALSE;
  }

 protected:
  void LetGo() override {
    FaceList<TextList>::Current().Remove(list_.get(), this);
    list_ = nullptr;
  }

 private:
  HRESULT Run(DISPID id, const Arguments& arguments, Value& result) {
    switch (id) {
      case kItem:
        if (!arguments.AreBetween(1, 1)) return DISP_E_BADPARAMCOUNT;
        result =
            WithPlace(arguments, [&](auto place) { return Value(std::string_view(list_->Item(place))); });
        return S_OK;
      case kAdd:
        if (!arguments.AreBetween(1, 2)) return DISP_E_BADPARAMCOUNT;
        if (arguments.Has(1)) {
          list_->Add(arguments.Text(0), arguments.Text(1));
        } else {
          list_->Add(arguments.Text(0));
        }
        return S_OK;
      case kCount:
        if (!arguments.AreBetween(0, 0)) return DISP_E_BADPARAMCOUNT;
        result = Value(LONG{list_->Count()});
        return S_OK;
      case kRemove:
        if (!arguments.AreBetween(1, 1)) return DISP_E_BADPARAMCOUNT;
        WithPlace(arguments, [&](auto place) { list_->Remove(place); });
        return S_OK;
      case DISPID_NEWENUM:
        result->punkVal = new Enumeration(list_, 0);
        result->vt = VT_UNKNOWN;
        return S_OK;
      default:
        return DISP_E_MEMBERNOTFOUND;
    }
  }

  TextListPtr list_;
};

}  // namespace

ComPtr<IDispatch> ExposeList(const TextListPtr& list) {
  if (list == nullptr) return nullptr;
  const ComPtr<IDispatch> face = FaceList<TextList>::Current().FaceOf(list.get());
  return face ? face : Taken<IDispatch>(new Collection(list));
}

TextListPtr ListBehind(IDispatch* face) {
  if (face == nullptr) return nullptr;
  TextListPtr list = FaceList<TextList>::Current().NativeOf(face);
  if (list == nullptr) throw Failure(ErrorNumber::TypeMismatch, "not a collection of this component");
  return list;
}

}  // namespace vorlent::com
