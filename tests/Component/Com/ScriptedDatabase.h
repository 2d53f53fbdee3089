// The database of a host over COM: one SQLite file.
#pragma once

#include "Component/Com/ScriptedObject.h"

namespace vorlent::com {

ComPtr<ScriptedObject> NewScriptedDatabase();

}  // namespace vorlent::com
