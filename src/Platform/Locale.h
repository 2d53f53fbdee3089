// The user's way to write numbers.
#pragma once

namespace vorlent::os {

// The decimal sign of the user's locale, '.' where the locale can't be told.
char DecimalSign();

}  // namespace vorlent::os
