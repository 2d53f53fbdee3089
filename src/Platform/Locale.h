// The user's language and way to write numbers.
#pragma once

#include <string>

namespace vorlent::os {

// The decimal sign of the user's locale, '.' where the locale can't be told.
char DecimalSign();

// The name of the user's locale for messages, such as "de_DE.UTF-8"; it needn't be one that is installed.
std::string MessageLocale();

}  // namespace vorlent::os
