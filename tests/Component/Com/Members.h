// Uses of members, and the clients that make them: scripts, callers by name, callers by slot.
#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// Objects that a use can name. "nothing" is Nothing.
using Objects = std::map<std::string, ComPtr<IDispatch>>;

struct Named {
  std::string name;
};
using Argument = std::variant<std::string, bool, LONG, Named>;

enum class Way { Get, Put, Set, Call };

// A use of a member of the object "o".
struct Use {
  Way way = Way::Call;
  std::string member = {};
  std::vector<Argument> arguments = {};
  // What comes back: a text, a number, "true" or "false", "object", "nothing", "" for no result. With a "..."
  // at its end only the beginning.
  std::string expected = {};
  // A property of the object that comes back, which is what is expected.
  std::string then = {};
  // The name that the object has from now on.
  std::string keptAs = {};

  Use Then(std::string property) const;
  Use KeptAs(std::string name) const;
};

Use Get(std::string member, std::string expected);
Use Put(std::string member, Argument value);
Use Set(std::string member, std::string object);
Use Call(std::string member, std::vector<Argument> arguments, std::string expected);

// What came back, as Use::expected has it.
std::string ResultText(const VARIANT& result);

enum class Client { VBScript, JScript, Names, Slots };
std::string ClientName(Client client);

// Makes the uses one after the other and gives what came of each; the last is an error's text if one failed.
// `slots` is the description of the object's interface.
std::vector<std::string> UseMembers(Client client, ITypeInfo& slots, Objects objects,
                                    const std::vector<Use>& uses);

}  // namespace vorlent::com
