// Rich-text (RTF) log files: a writer for the log text and a reader for what the writer makes
// (and for plain RTF of other programs, as text). Log texts break lines with "\r".
//
// The writer keeps every byte: a character outside ASCII is written as "\uN\'3f" (UTF-16 units, "?"
// for readers that know no Unicode), and a byte that is not UTF-8 (a file name from another
// system) as the unpaired surrogate U+DC80 + byte, which the reader turns back into that byte.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marigold {

// The RTF document of `text`. When `linkAddress` is not empty, its first occurrence in the text
// is replaced by "by " and a hyperlink to it whose visible text is `linkText`.
std::string MakeRtfDocument(std::string_view text, std::string_view linkAddress = {},
                            std::string_view linkText = {});

// The text of an RTF document: paragraphs and line breaks end in "\r", tabs stay tabs, a
// hyperlink reads as its visible text, font tables and other hidden groups are left out.
// Nothing when `rtf` is not RTF or its groups do not close.
std::optional<std::string> ReadRtfText(std::string_view rtf);

}  // namespace marigold
