#include "Common/StdDialoge.h"

#include <algorithm>

#include "Common/StdModul.h"
#include "Platform/Failure.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr std::size_t kLongestPath = 300;

constexpr std::string_view kExtensionLabels =
    "doc=Word|xls=Excel|ppt=Powerpoint|html=Web|mht=Webarchiv|bmp=Bitmap|jpg=Jpeg|csv=CSV|log=Log|"
    "vorlent=Vor-LENT|mdb=Access-Datenbank|ini=Ini|txt=Text|exe=Anwendungs|dat=Vorlent-Daten|"
    "sndr=Sendarium|tree=Quorvan Baum|quorvan=Quorvan";

constexpr std::int32_t kHideReadOnly = 0x0004;
constexpr std::int32_t kAskToOverwrite = 0x0002;
constexpr std::int32_t kPathMustExist = 0x0800;
constexpr std::int32_t kFileMustExist = 0x1000;

std::int32_t FlagsOf(std::int16_t mode) {
  switch (mode) {
    case 0:
      return kFileMustExist | kPathMustExist | kHideReadOnly;
    case 1:
      return kPathMustExist | kHideReadOnly | kAskToOverwrite;
    case 2:
      return kPathMustExist | kHideReadOnly;
    default:
      return 0;
  }
}

std::string LabelOf(const std::string& extension) {
  if (extension == "*") return "Alle Dateien";
  const std::string label = GetParam(kExtensionLabels, extension);
  return (label.empty() ? extension : label) + "-Dateien";
}

// The filter as the dialog takes it, each part closed by a zero character.
std::string CloseParts(std::string filter) {
  filter += "||";
  std::replace(filter.begin(), filter.end(), '|', '\0');
  return filter;
}

std::string CurrentFolder() {
  std::string folder;
  Swallow([&] { folder = Platform::Current().CurrentFolder(); });
  return folder;
}

}  // namespace

std::string ExpandFilter(std::string_view filter) {
  if (!filter.starts_with('#')) return std::string(filter);
  std::string extensions(filter.substr(1));
  std::string expanded;
  while (!extensions.empty()) {
    const std::string extension = CutToken(extensions, "#");
    if (!expanded.empty()) expanded += "|";
    expanded += LabelOf(extension) + "|*." + extension;
  }
  return expanded;
}

std::string ShowFileDialog(std::int32_t owner, std::string_view title, std::string& folder,
                           std::string_view file, std::string_view filter, std::string_view extension,
                           std::int16_t mode) {
  FileDialogRequest request;
  request.owner = owner;
  request.title = title;
  request.initialFolder = folder.empty() ? CurrentFolder() : folder;
  request.filter = CloseParts(ExpandFilter(filter));
  if (file.size() <= kLongestPath)
    request.nameBuffer = std::string(file).append(kLongestPath - file.size(), '\0');
  request.nameBufferSize = static_cast<std::int32_t>(request.nameBuffer.size());
  request.defaultExtension = extension;
  request.flags = FlagsOf(mode);
  request.save = mode != 0;

  const std::string folderBefore = CurrentFolder();
  FileDialogAnswer answer;
  Swallow([&] { answer = Platform::Current().ShowFileDialog(request); });
  std::string result;
  if (answer.chosen) {
    const std::string path = PeekToken(answer.nameBuffer, std::string_view("\0", 1));
    const std::size_t nameStart =
        std::min(path.size(), static_cast<std::size_t>(std::max<std::int16_t>(answer.fileNameOffset, 0)));
    result = folder.empty() ? path : path.substr(nameStart);
    if (!folder.empty()) folder = path.substr(0, nameStart);
  }
  Swallow([&] { Platform::Current().SetCurrentFolder(folderBefore); });
  return result;
}

std::string ShowOpenDialog(std::int32_t owner, std::string_view title, std::string& folder,
                           std::string_view file, std::string_view filter, std::string_view extension) {
  return ShowFileDialog(owner, title, folder, file, filter, extension, 0);
}

}  // namespace vorlent
