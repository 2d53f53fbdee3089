// The wizard as a control in a container: its life there, where its controls stand, and what the user does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Component/Com/ControlContainer.h"
#include "Component/Com/HostedTest.h"
#include "Connectors/Mozilla/WizardForm.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "Platform/CodePage.h"
#include "Support/RecordingHost.h"

namespace vorlent::com {
namespace {

class ControlTest : public HostedTest {
 protected:
  void SetUp() override {
    window_ = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 640, 500, nullptr,
                              nullptr, nullptr, nullptr);
    if (window_ == nullptr) GTEST_SKIP() << "there is no display";
    container_ = std::make_unique<ControlContainer>(window_);
    control_ = New<_WizardImport>(__uuidof(::WizardImport));
    ASSERT_NE(control_.Get(), nullptr);
    container_->Embed(control_.Get());
  }

  void TearDown() override {
    if (container_ != nullptr) {
      container_->Leave();
      control_.Reset();
      EXPECT_EQ(container_->References(), 0U) << "the container is still held";
      DestroyWindow(window_);
    }
    HostedTest::TearDown();
  }

  void Activate() { ASSERT_EQ(container_->Do(OLEIVERB_UIACTIVATE), S_OK); }
  void ShowPage(SHORT page) { ASSERT_EQ(control_->ShowPage(&page), S_OK); }
  std::string Command() {
    BSTR text = nullptr;
    control_->get_Parameter(&text);
    std::string command = TextOf(text);
    SysFreeString(text);
    return command;
  }

  HWND Form() {
    HWND form = nullptr;
    ComPtr<IOleWindow> window;
    if (SUCCEEDED(control_.As(&window))) window->GetWindow(&form);
    return form;
  }
  // The window of a control by its place in the table, which the windows of a page stand in, too.
  HWND Shown(std::string_view name) {
    HWND page = nullptr;
    HWND inside = nullptr;
    for (const ControlSpec& spec : WizardControlTable()) {
      if (spec.kind == ControlKind::Page) {
        page = page == nullptr ? GetWindow(Form(), GW_CHILD) : GetWindow(page, GW_HWNDNEXT);
        inside = GetWindow(page, GW_CHILD);
        if (spec.name == name) return page;
        continue;
      }
      if (spec.name == name) return inside;
      inside = GetWindow(inside, GW_HWNDNEXT);
    }
    return nullptr;
  }
  std::string Text(std::string_view name) {
    wchar_t text[1000] = {};
    GetWindowTextW(Shown(name), text, 1000);
    return TextOf(std::wstring_view(text));
  }
  bool IsSet(std::string_view name) { return SendMessageW(Shown(name), BM_GETCHECK, 0, 0) == BST_CHECKED; }
  void Click(std::string_view name) { SendMessageW(Shown(name), BM_CLICK, 0, 0); }

  // As a container's loop treats a key that the focused window gets.
  void Press(WPARAM key, UINT message = WM_KEYDOWN) {
    MSG pressed = {};
    pressed.hwnd = GetFocus();
    pressed.message = message;
    pressed.wParam = key;
    if (!container_->Translate(pressed)) SendMessageW(pressed.hwnd, pressed.message, pressed.wParam, 1);
    Settle();
  }
  static void Settle() {
    MSG message = {};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
      DispatchMessageW(&message);
  }
  std::string Focused() {
    for (const ControlSpec& spec : WizardControlTable()) {
      if (Shown(spec.name) == GetFocus()) return std::string(spec.name);
    }
    return {};
  }

  // The rows that can be seen, "x" after ticked ones.
  std::vector<std::string> Rows(std::string_view name) {
    const HWND tree = Shown(name);
    std::vector<std::string> rows;
    for (auto item = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0); item != 0;
         item = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_NEXTVISIBLE, item)) {
      wchar_t text[1000] = {};
      TVITEMW row = {};
      row.mask = TVIF_TEXT | TVIF_STATE | TVIF_HANDLE;
      row.hItem = reinterpret_cast<HTREEITEM>(item);
      row.pszText = text;
      row.cchTextMax = 1000;
      row.stateMask = TVIS_STATEIMAGEMASK;
      SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&row));
      constexpr UINT kTicked = INDEXTOSTATEIMAGEMASK(2);
      rows.push_back(TextOf(std::wstring_view(text)) +
                     ((row.state & TVIS_STATEIMAGEMASK) == kTicked ? " x" : ""));
    }
    return rows;
  }

  HWND window_ = nullptr;
  std::unique_ptr<ControlContainer> container_;
  ComPtr<_WizardImport> control_;
};

using testing::ElementsAre;
using testing::IsEmpty;

// --- Life in a container --------------------------------------------------------------------------------

TEST_F(ControlTest, OffersWhatContainersAskFor) {
  const IID asked[] = {IID_IUnknown,
                       IID_IDispatch,
                       IID_IOleObject,
                       IID_IOleWindow,
                       IID_IOleInPlaceObject,
                       IID_IOleInPlaceActiveObject,
                       IID_IOleControl,
                       IID_IPersist,
                       IID_IPersistStreamInit,
                       IID_IViewObject,
                       IID_IViewObject2,
                       IID_IProvideClassInfo,
                       IID_IProvideClassInfo2,
                       __uuidof(_WizardImport),
                       __uuidof(ISupportErrorInfo)};
  ComPtr<IUnknown> identity;
  ASSERT_EQ(control_.As(&identity), S_OK);
  for (const IID& id : asked) {
    ComPtr<IUnknown> seen;
    ASSERT_EQ(control_->QueryInterface(id, reinterpret_cast<void**>(seen.GetAddressOf())), S_OK);
    ComPtr<IUnknown> same;
    ASSERT_EQ(seen.As(&same), S_OK);
    EXPECT_EQ(same.Get(), identity.Get());
  }
}

TEST_F(ControlTest, TellsItsClassItsStatusAndTheSizeThatItIsDesignedFor) {
  IOleObject& object = *container_->Object();
  CLSID id = {};
  EXPECT_EQ(object.GetUserClassID(&id), S_OK);
  EXPECT_TRUE(IsEqualCLSID(id, __uuidof(::WizardImport)));
  DWORD status = 0;
  EXPECT_EQ(object.GetMiscStatus(DVASPECT_CONTENT, &status), S_OK);
  EXPECT_EQ(status, 131473U);
  SIZEL size = {};
  EXPECT_EQ(object.GetExtent(DVASPECT_CONTENT, &size), S_OK);
  EXPECT_EQ(size.cx, std::lround(6015 * 2540 / 1440.0));
  EXPECT_EQ(size.cy, std::lround((840 + 3495) * 2540 / 1440.0));
  size = {1000, 2000};
  EXPECT_EQ(object.SetExtent(DVASPECT_CONTENT, &size), S_OK);
  size = {};
  EXPECT_EQ(object.GetExtent(DVASPECT_CONTENT, &size), S_OK);
  EXPECT_EQ(size.cx, 1000);
  EXPECT_EQ(object.SetExtent(DVASPECT_ICON, &size), DV_E_DVASPECT);
  ComPtr<IProvideClassInfo2> description;
  ASSERT_EQ(control_.As(&description), S_OK);
  GUID events = {};
  EXPECT_EQ(description->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
  EXPECT_TRUE(IsEqualGUID(events, __uuidof(__WizardImport)));
}

TEST_F(ControlTest, GoesIntoItsContainerAndOutOfIt) {
  Activate();
  EXPECT_EQ(container_->told, "in-place active");
  EXPECT_TRUE(IsChild(window_, Form()));
  EXPECT_TRUE(IsWindowVisible(Form()));
  ComPtr<IOleInPlaceObject> placed;
  ASSERT_EQ(control_.As(&placed), S_OK);
  EXPECT_EQ(placed->UIDeactivate(), S_OK);
  EXPECT_EQ(placed->InPlaceDeactivate(), S_OK);
  EXPECT_EQ(container_->told, "in-place active inactive out");
  EXPECT_EQ(Form(), nullptr);
  EXPECT_EQ(GetWindow(window_, GW_CHILD), nullptr);
  Activate();
  EXPECT_NE(Form(), nullptr) << "it can come again";
}

TEST_F(ControlTest, CloseLetsGoOfAllThatIsTheContainers) {
  Activate();
  EXPECT_GT(container_->References(), 0U);
  EXPECT_EQ(container_->Object()->Close(OLECLOSE_NOSAVE), S_OK);
  EXPECT_EQ(container_->References(), 0U);
  EXPECT_EQ(container_->told, "in-place active inactive out");
}

TEST_F(ControlTest, IsGoneWithItsLastReferenceThoughTheContainerForgotToCloseIt) {
  Activate();
  ComPtr<IUnknown> last;
  ASSERT_EQ(control_.As(&last), S_OK);
  const HWND form = Form();
  control_.Reset();
  container_->Object()->SetClientSite(nullptr);
  container_->Leave();
  EXPECT_FALSE(IsWindow(form));
  EXPECT_EQ(last.Reset(), 0U);
}

TEST_F(ControlTest, ContainersWindowMayGoBeforeTheControl) {
  Activate();
  DestroyWindow(window_);
  EXPECT_EQ(Form(), nullptr);
  ShowPage(1);
  EXPECT_EQ(Command(), "target target\r\naction copy\r\nkeyword #subpath\r\noption tree\r\n");
}

TEST_F(ControlTest, ContainerThatRefusesGetsNoWindow) {
  container_->refuses = true;
  EXPECT_EQ(container_->Do(OLEIVERB_SHOW), E_FAIL);
  EXPECT_EQ(Form(), nullptr);
  EXPECT_THAT(container_->told, IsEmpty());
}

// --- Place and look -------------------------------------------------------------------------------------

TEST_F(ControlTest, EveryControlStandsWhereTheFormSays) {
  Activate();
  for (const SIZE size : {SIZE{401, 289}, SIZE{640, 500}, SIZE{1200, 900}}) {
    SetWindowPos(window_, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
    container_->Fit();
    const RECT inner = container_->Place();
    const HDC screen = GetDC(Form());
    const double dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(Form(), screen);
    const auto pixels = [&](int twips) { return static_cast<int>(std::lround(twips * dpi / 1440)); };
    const auto twips = [&](int given) { return static_cast<std::int32_t>(std::lround(given * 1440 / dpi)); };
    // The same form of this program's own says what is expected.
    const test::RecordingHost host;
    WizardImport expected;
    expected.Layout(twips(inner.right), twips(inner.bottom));
    for (const auto& control : expected.Form().Controls()) {
      RECT place = {};
      const HWND shown = Shown(control->Name());
      GetWindowRect(shown, &place);
      MapWindowPoints(nullptr, GetParent(shown), reinterpret_cast<POINT*>(&place), 2);
      EXPECT_EQ(place.left, pixels(control->Left())) << control->Name();
      EXPECT_EQ(place.top, pixels(control->Top())) << control->Name();
      const bool isCaption = control->Kind() == ControlKind::Label ||
                             control->Kind() == ControlKind::OptionButton ||
                             control->Kind() == ControlKind::CheckBox;
      const LONG right = pixels(control->Left() + control->Width());
      const LONG bottom = pixels(control->Top() + control->Height());
      if (isCaption) {
        EXPECT_GE(place.right, right) << control->Name();
        EXPECT_GE(place.bottom, bottom) << control->Name();
      } else {
        EXPECT_EQ(place.right, right) << control->Name();
        EXPECT_EQ(place.bottom, bottom) << control->Name();
      }
    }
  }
}

TEST_F(ControlTest, CaptionsAreThoseOfTheForm) {
  Activate();
  for (const ControlSpec& spec : WizardControlTable()) {
    if (spec.caption.empty()) continue;
    std::string shown = Text(spec.name);
    std::erase(shown, '&');
    EXPECT_EQ(shown, TextFromUtf8(spec.caption)) << spec.name;
  }
}

TEST_F(ControlTest, HasTheContainersFont) {
  FONTDESC described = {};
  wchar_t name[] = L"Tahoma";
  described.cbSizeofstruct = sizeof(described);
  described.lpstrName = name;
  described.cySize.int64 = 14 * 10000;
  described.sWeight = FW_BOLD;
  described.sCharset = DEFAULT_CHARSET;
  ASSERT_EQ(OleCreateFontIndirect(&described, IID_IFontDisp,
                                  reinterpret_cast<void**>(container_->font.GetAddressOf())),
            S_OK);
  Activate();
  LOGFONTW shown = {};
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Shown("Option1"), WM_GETFONT, 0, 0)), sizeof(shown),
             &shown);
  EXPECT_EQ(shown.lfWeight, FW_BOLD);
  container_->font.Reset();
  ComPtr<IOleControl> control;
  ASSERT_EQ(control_.As(&control), S_OK);
  EXPECT_EQ(control->OnAmbientPropertyChange(DISPID_AMBIENT_FONT), S_OK);
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Shown("Option1"), WM_GETFONT, 0, 0)), sizeof(shown),
             &shown);
  EXPECT_EQ(shown.lfWeight, FW_NORMAL);
}

// --- Keys and clicks ------------------------------------------------------------------------------------

TEST_F(ControlTest, TabWalksThroughThePageAndLeavesItAtItsEnd) {
  ShowPage(1);
  Activate();
  std::vector<std::string> walked;
  for (int i = 0; i < 5; ++i) {
    walked.push_back(Focused());
    Press(VK_TAB);
  }
  EXPECT_THAT(walked, ElementsAre("Option1", "qzelSheet1", "Text1", "qzelButton1", "Check1"));
  EXPECT_EQ(Focused(), "Option1") << "a container without a use for the key";
  container_->takesTab = true;
  for (int i = 0; i < 5; ++i)
    Press(VK_TAB);
  EXPECT_EQ(Focused(), "Check1");
  EXPECT_THAT(container_->told, testing::EndsWith("tab"));
}

TEST_F(ControlTest, MnemonicsLeadToTheirControls) {
  ShowPage(1);
  Activate();
  Press('e', WM_SYSCHAR);  // eine Thunderbird-Datei
  EXPECT_TRUE(IsSet("Option2"));
  EXPECT_FALSE(IsSet("Option1"));
  Press('t', WM_SYSCHAR);  // Thunderbird-Folder
  EXPECT_TRUE(IsSet("Option1"));
  Press('i', WM_SYSCHAR);  // inkl. Unterverzeichnisse
  EXPECT_FALSE(IsSet("Check1"));
}

TEST_F(ControlTest, ArrowsPickTheOtherOption) {
  ShowPage(1);
  Activate();
  Press(VK_DOWN);
  EXPECT_TRUE(IsSet("Option2"));
  EXPECT_EQ(Focused(), "Option2");
  Press(VK_UP);
  EXPECT_TRUE(IsSet("Option1"));
}

TEST_F(ControlTest, ArrowKeysOpenAndCloseRowsAndSpaceTicksThem) {
  ShowPage(1);
  Activate();
  Press(VK_TAB);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://"));
  Press(VK_RIGHT);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://", "One"));
  Press(VK_DOWN);
  Press(VK_SPACE);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://", "One x"));
  Press(VK_SPACE);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://", "One"));
  Press(VK_LEFT);
  Press(VK_LEFT);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://"));
}

TEST_F(ControlTest, TickedRowLosesWhatIsBelowItAndGetsItBackWhenCleared) {
  ShowPage(1);
  Activate();
  Press(VK_TAB);
  Press(VK_RIGHT);
  Press(VK_SPACE);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird:// x"));
  Press(VK_SPACE);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://"));
  Press(VK_RIGHT);
  EXPECT_THAT(Rows("qzelSheet1"), ElementsAre("thunderbird://", "One"));
}

TEST_F(ControlTest, FourPagesLeadToTheCommand) {
  ShowPage(1);
  Activate();
  SetWindowTextW(Shown("Text1"), L"C:\\Mail\\B\u00FCro");
  EXPECT_TRUE(IsSet("Option2")) << "typing chooses the file";
  ShowPage(2);
  Settle();
  EXPECT_EQ(Focused(), "qzelSheet2");
  EXPECT_THAT(Rows("qzelSheet2"), ElementsAre("C:\\Mail\\B\xFCro x"));
  ShowPage(3);
  EXPECT_EQ(Focused(), "Combo1");
  EXPECT_EQ(Text("Combo1"), "target");
  Click("Option3");
  EXPECT_FALSE(IsSet("Option4"));
  Click("Check3");
  ShowPage(4);
  EXPECT_EQ(Focused(), "Check2");
  SendMessageW(Shown("T_Keywords"), EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L"B\u00FCro\r\nprivat"));
  EXPECT_EQ(Command(),
            "target target\r\naction move\r\nkeyword #subpath\r\nkeyword B\xFCro\r\nkeyword privat\r\n"
            "import C:\\Mail\\B\xFCro\r\n");
}

}  // namespace
}  // namespace vorlent::com
