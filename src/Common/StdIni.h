// Sectioned text documents, such as profiles.ini.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// A document of at most 200 sections, each with its text kept as one block, so that comments, blank lines and
// the order of keys survive. Sections and keys are found without regard to letter case. A position outside 1
// to 200 raises SubscriptOutOfRange; a file that can't be read or written raises its failure.
class StdIni {
 public:
  // Number of sections; 201 after a failed attempt to add one to 200.
  std::int32_t Count() const { return count_; }
  // The file given to the last Load, read or not.
  const std::string& FileName() const { return fileName_; }
  // Whether the document was changed since it was loaded or cleared; saving it changes nothing about that.
  bool isDirty() const { return isDirty_; }

  // Leaves no section and nothing to be saved; FileName stays.
  void Clear();
  // Reads a document; a file that doesn't exist leaves it empty.
  void Load(std::string_view file);
  // The same from text. A section of a name that was there already is kept, but never found.
  void LoadString(std::string_view ini);  // a macro of windows.h: never read both
  // Writes a changed document; an empty `file` is set to the name of the last Load.
  void Save(std::string& file);

  // The lines of a section, each ended by CR LF; "" without one.
  std::string GetSectionValue(std::string_view sch) const;
  // Replaces the lines of a section as they are given; a section that is missing is appended.
  void SetSectionValue(std::string_view sch, std::string_view wrt);
  // The value of the first entry of a key, "" if there is none. Blanks belong to key and value.
  std::string GetString(std::string_view sch, std::string_view key) const;
  // All values of a key, each ended by CR LF.
  std::string GetStringMulti(std::string_view sch, std::string_view key) const;
  // Changes the first entry of exactly that key, letter case included, or appends one.
  void SetString(std::string_view sch, std::string_view key, std::string_view wrt);
  bool ExistSection(std::string_view sch) const;
  // Position from 1, 0 if not found.
  std::int32_t GetSectionNr(std::string_view sch) const;
  // Removes a section with its lines; nothing happens without one.
  void DeleteSection(std::string_view sch);
  // The name at a position from 1; beyond Count what the table still holds there.
  std::string GetSection(std::int32_t pos) const;
  // Renames the section at a position. One beyond Count makes all up to there sections of the document.
  void SetSection(std::int32_t pos, std::string_view sch);

 private:
  static constexpr std::int32_t kMaxSections = 200;
  struct Section {
    std::string name;
    std::string body;
  };

  Section& At(std::int32_t pos);
  const Section& At(std::int32_t pos) const;

  std::array<Section, kMaxSections> sections_;
  std::int32_t count_ = 0;
  std::string fileName_;
  bool isDirty_ = false;
};

}  // namespace vorlent
