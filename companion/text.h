/// Texts in the encodings and notations that the companion reads and writes.
#pragma once

#include <string>
#include <string_view>

namespace companion
{

/// A text of ISO 8859-1, as the utility's files have it, in UTF-8. Control characters, which no
/// sound file holds, become '?'.
[[nodiscard]] std::string utf8(std::string_view latin1);

/// UTF-8 for an element or a quoted attribute of XML or HTML; control characters and broken UTF-8,
/// of which XML knows no form, become '?'.
[[nodiscard]] std::string escaped_markup(std::string_view text);

/// A text of the user's (a file name, a reason) as valid UTF-8: what is none becomes '?'.
[[nodiscard]] std::string valid_utf8(std::string_view text);

/// UTF-8 in which signs that a keyboard or a terminal may lack have their form of plain characters
/// ("deg", "+-", "u", "Ohm"), as words of rules have them. All else stays.
[[nodiscard]] std::string plain_signs(std::string_view text);

/// A text as a device sent it: UTF-8 where it is sound, else ISO 8859-1.
[[nodiscard]] std::string device_text(std::string_view bytes);

/// Takes exactly these characters off the begin of a text.
[[nodiscard]] bool take(std::string_view& text, std::string_view expected);

/// The shortest decimal form that reads back as the same number; "" for what is no finite number.
[[nodiscard]] std::string number_text(double value);

} // namespace companion
