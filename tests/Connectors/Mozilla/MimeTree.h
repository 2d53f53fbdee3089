// MIME mails from their structure, and what a reader made of them in the same short form.
#pragma once

#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

// Renders a structure such as `mixed(alt(text,html),att"a.pdf":1234)` as the content of a mail, from its
// Content-Type header on, with a line feed at each line end. The boundaries are B1, B2, ... in the order of
// the containers; an attachment is base64 of so many bytes.
class MimeTree {
 public:
  static std::string Render(std::string_view structure) {
    MimeTree tree(structure);
    return tree.Node();
  }

 private:
  explicit MimeTree(std::string_view rest) : rest_(rest) {}

  std::string Node() {
    const std::string kind = Take(rest_.find_first_of("(),\""));
    if (kind == "text") return "Content-Type: text/plain\n\nplain text\n";
    if (kind == "html") return "Content-Type: text/html\n\n<p>html</p>\n";
    if (kind == "att") return Attachment();
    const std::string boundary = "B" + std::to_string(++containers_);
    std::string text = "Content-Type: multipart/" + kind + "; boundary=" + boundary + "\n\n";
    do {
      Take(1);  // "(" or ","
      text += "--" + boundary + "\n" + Node();
    } while (rest_.starts_with(','));
    Take(1);
    return text + "--" + boundary + "--\n";
  }

  std::string Attachment() {
    Take(1);
    const std::string name = Take(rest_.find('"'));
    Take(2);
    const std::string size = Take(rest_.find_first_of(",)"));
    const std::string data = Base64Encode(std::string(std::stoul(size), 'x'));
    std::string text =
        "Content-Disposition: attachment; filename=\"" + name + "\"\nContent-Transfer-Encoding: base64\n\n";
    for (std::size_t at = 0; at < data.size(); at += 76)
      text += data.substr(at, 76) + "\n";
    return text;
  }

  std::string Take(std::size_t count) {
    const std::string taken(rest_.substr(0, count));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest_;
  int containers_ = 0;
};

// The parts that a reader found, in order: containers by the word after "multipart/", "text", "html", and
// att"name" with the size of its temporary file, if there is one, behind a colon.
inline std::string PrintParts(const StdMail& mail, const TemporaryFolder& folder) {
  std::string text;
  for (std::int32_t i = 1; i <= mail.Attachments()->Count(); ++i) {
    const std::string& header = mail.Attachments()->Item(i);
    const std::string name = GetPartFileName(header);
    const std::string type = GetPartContentType(header);
    if (i > 1) text += ' ';
    if (name.empty()) {
      text += type == "text/plain" ? "text" : type == "text/html" ? "html" : type.substr(type.find('/') + 1);
      continue;
    }
    text += "att\"" + name + "\"";
    const std::string file = "tmp\\att" + std::to_string(i);
    if (folder.Exists(file)) text += ":" + std::to_string(folder.Read(file).size());
  }
  return text;
}

}  // namespace vorlent
