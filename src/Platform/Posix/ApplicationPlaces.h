// Where applications keep their data.
//
// The user's own application-data folder is no real one: "AppData" in the home stands for the home itself,
// and the names "Thunderbird", "Mozilla\FireFox" and "Mozilla\Sunbird" below it for one of the places where
// these applications keep their data on this system: the first that has a "profiles.ini", else the first that
// exists.
#pragma once

#include <string>

namespace vorlent::os {

// The Windows path of the application-data folder, "" if no home can be told. That of the user's own begins
// at the root: with the letter of a drive that stands for the root, without a drive if there is none.
std::string AppDataPath();

// The native path with the real place put in where it lies below the user's own application-data folder.
std::string WithRealPlace(std::string native);

}  // namespace vorlent::os
