// What a container is told of the wizard's control before it makes one.
#pragma once

#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

inline constexpr DWORD kControlStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE |
                                        OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE |
                                        OLEMISC_SETCLIENTSITEFIRST;

}  // namespace vorlent::com
