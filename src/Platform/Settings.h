// What a program may settle about the machine before the component works on it: what drive letters stand for,
// and where the user's data lie.
//
// The settings belong to the process and are made before paths are used. Folders are native ones, in UTF-8; a
// relative one is one of the folder that is current now.
#pragma once

#include <string_view>

#include "Platform/Public.h"

namespace vorlent::os {

// Says what a drive letter stands for, in either case; an empty folder takes the drive away. Any other
// character raises InvalidCall.
// A system without drives begins with "C:" as its root, and no other. On one that has drives of its own, a
// letter given here goes before the system's, and taking it away brings that back.
VORLENT_PUBLIC void SetDrive(char letter, std::string_view nativeFolder);

// The user's home, where it isn't to be the system's answer; "" goes back to that.
// It tells where applications keep their data. A system that names a folder for that by itself needs no home,
// and does nothing here.
VORLENT_PUBLIC void SetHomeFolder(std::string_view nativeFolder);

// Points the application-data folder at a native folder with the Windows layout; "" goes back to the user's
// own. A system that names one by itself gives this one instead wherever it is asked.
VORLENT_PUBLIC void SetAppDataFolder(std::string_view nativeFolder);

// Takes back all of these settings.
VORLENT_PUBLIC void ResetSettings();

}  // namespace vorlent::os
