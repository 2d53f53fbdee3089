#include "Component/Component.h"

#include <memory>

#include "Connectors/Mozilla/Actions.h"
#include "Connectors/Mozilla/Location_FireFox.h"
#include "Connectors/Mozilla/Location_Sunbird.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

template <class Class>
ObjectPtr Make() {
  return std::make_shared<Class>();
}

constexpr ComponentClass kClasses[] = {
    {kThunderbirdScheme.progId, "{229D05C1-7126-420E-ACB6-70458A7FC236}",
     "{B23BB2D4-CF75-454F-883E-4216814B82D5}", Make<Location_Thunderbird>},
    {kFireFoxScheme.progId, "{73648EA2-7614-47E8-B577-8C09A1123062}",
     "{AD509209-FC57-4CEF-AD9D-9D379B6DF351}", Make<Location_FireFox>},
    {kSunbirdScheme.progId, "{9BFEE0EE-F0C5-462B-B151-2C7901932CC5}",
     "{B83DA60F-7A4C-4F14-89B3-DD1C8F520314}", Make<Location_Sunbird>},
    {"VorlentMozilla.Actions", "{24F4E411-5F6F-48A9-9F61-61E6607AD71E}",
     "{D4FCC313-4A06-4523-9B47-492FD99BB427}", Make<Actions>},
    {"VorlentMozilla.WizardImport", "{1702A783-9B4D-433C-AFA6-C2AACAC2DDE7}",
     "{47785AAA-CDCA-4358-B672-0397BEAEB566}", Make<WizardImport>},
    {"VorlentMozilla.StdMail", "{BC461512-FE62-45CF-AC68-C8E4D37AEDC4}",
     "{6128758A-0F3E-4B94-A9CA-6E7A7D0F13D6}", Make<StdMail>},
};

}  // namespace

std::span<const ComponentClass> ComponentClasses() {
  return kClasses;
}

ObjectPtr CreateObject(std::string_view progId) {
  for (const ComponentClass& entry : kClasses) {
    if (EqualNoCase(entry.progId, progId)) return entry.create();
  }
  return nullptr;
}

}  // namespace vorlent
