// How a moment is shown when an expectation fails. Every test file of a program that compares moments
// includes this.
#pragma once

#include <ostream>

#include "Platform/Time.h"

namespace vorlent {

inline void PrintTo(const DateTime& t, std::ostream* out) {
  *out << t.year << "-" << t.month << "-" << t.day << " " << t.hour << ":" << t.minute << ":" << t.second
       << "." << t.millisecond;
}

}  // namespace vorlent
