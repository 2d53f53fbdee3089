// The lines of a mailbox, some of which come more than once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Common/LineFile.h"

namespace vorlent {

// Reads a mailbox from front to back, by the line rule in force when it is opened, and takes back what was
// read too far: such lines come again before all others.
//
// The line read last is valid until the next Read, Open, Seek or Close, and until lines are put back; what
// Hold gave, until then, whatever is read meanwhile. No line costs an allocation: its text lies in the
// file's buffer, or in memory that is kept from line to line. Belongs to one thread.
class MailLines {
 public:
  // Gives up what was open and what was put back. Raises the failures of os::File::Open; nothing is open
  // then.
  void Open(std::string_view path, os::File::Mode mode);
  // Lines that were put back come still. Does nothing on a closed file.
  void Close() { file_.Close(); }
  bool IsOpen() const { return file_.IsOpen(); }

  // Goes to a position from 1. Gives up what was put back.
  void Seek(std::uint64_t position);

  // Whether there is no further line. A failed look at the file raises.
  bool AtEnd() { return !HasPutBack() && AtFileEnd(); }
  // Whether the file is closed or read to its end, be there lines that were put back or not.
  bool AtFileEnd() { return !file_.IsOpen() || file_.AtEnd(); }

  // Position from 1 of the next line; at the end, that of the end.
  std::uint64_t Position() const { return HasPutBack() ? again_.lines[next_].position : file_.Position(); }

  // The next line without its line end, "" at the end. A failed read raises and leaves the position where it
  // was.
  std::string_view Read() {
    if (HasPutBack()) return ReadAgain();
    const std::uint64_t position = file_.Position();
    line_ = file_.ReadLine();
    position_ = position;
    lineEnd_ = file_.LineEnd();
    return line_;
  }

  // What the end of the line read last counts for, as LineFile tells.
  std::string_view LineEnd() const { return lineEnd_; }

  // Whether the line read last is a piece, and more of it comes.
  bool LineGoesOn() { return lineEnd_.empty() && !AtEnd(); }

  // The line after the one read last, which it stays, held; nothing at the end.
  std::optional<std::string_view> Peek();

  // Lets the line read last come again, as it was.
  void PutBack();
  // As PutBack, but a line feed in it then ends a line, whatever the line rule says.
  void PutBackAsText();

  // To read ahead. Hold gives the line read last, to stay valid meanwhile; Keep notes the line read last as
  // one that is to come again; PutBackKept lets them come again, as text and in their order.
  std::string_view Hold();
  void Keep() { kept_.Add(line_, position_, lineEnd_); }
  void DropKept() { kept_.Clear(); }
  void PutBackKept();

  // Bytes in the file at present, 0 if it is closed.
  std::uint64_t Length() const { return file_.IsOpen() ? file_.Length() : 0; }

 private:
  struct Line {
    std::size_t end;  // in the text of its store; it begins where the one before it ends
    std::uint64_t position;
    std::string_view lineEnd;
  };
  // Lines one after the other.
  struct Store {
    std::string text;
    std::vector<Line> lines;

    void Add(std::string_view line, std::uint64_t position, std::string_view lineEnd);
    void AddAsText(std::string_view line, std::uint64_t position, std::string_view lineEnd);
    void Clear();
    std::string_view At(std::size_t index) const;
  };

  bool HasPutBack() const { return next_ < again_.lines.size(); }
  std::string_view ReadAgain();
  void LetComeAgain();

  LineFile file_;
  std::string_view line_;  // the line read last, and what is known of it
  std::uint64_t position_ = 1;
  std::string_view lineEnd_;
  std::string held_;
  Store kept_;
  Store first_;           // lines that are about to be put back
  Store again_;           // lines put back
  std::size_t next_ = 0;  // the next of them
};

}  // namespace vorlent
