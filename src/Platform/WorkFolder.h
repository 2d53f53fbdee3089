// The place for a program's temporary files, which don't outlive it, even if it is killed.
#pragma once

#include <cstdint>
#include <string>

namespace vorlent::os {

// A new folder below that for temporary files, private to the user and removed by the destructor with all
// that it holds. As long as it stands, its process holds a lock on a file inside, the marker.
class WorkFolder {
 public:
  // Raises a failure where the folder can't be made.
  WorkFolder();
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  // The Windows path, with a trailing separator.
  const std::string& Path() const { return path_; }

 private:
  static constexpr std::intptr_t kNone = -1;

  // Makes a folder and takes its marker. False if another program has taken the folder for one that was left.
  bool TryMake();

  std::string path_;
  std::string native_;
  std::intptr_t marker_ = kNone;
};

// Removes the work folders of the user whose processes ended without doing so. What can't be removed stays,
// and so does whatever lacks the marker. No link is followed.
void RemoveAbandonedWorkFolders();

}  // namespace vorlent::os
