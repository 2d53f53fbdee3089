// The readable text of a stored mail, for searching.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// The words at the beginning of a mail file as UTF-8: those of its texts, decoded, without headers and
// without lines of encoded data. What can't be read gives "".
std::string TextOfMailFile(std::string_view path);

// The words of the first part of an HTML file as UTF-8, without its tags, styles and scripts. A page that
// tells no charset has that of the mail file that it belongs to, "" if there is none.
std::string TextOfHtmlFile(std::string_view path, std::string_view mailPath = {});

// The steps on their own.
std::string TextOfMail(std::string_view mail);
std::string TextOfHtml(std::string_view html, std::string_view charsetOfMail = {});

}  // namespace vorlent
