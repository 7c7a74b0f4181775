// How the program names itself in its logs and mails: the product, the edition word, the web
// address that the log's first line ends with, and the maker's domain that the RTF log links.
#pragma once

#include "logging/email_account.h"

namespace marigold {

inline constexpr const char* kProductName = "Marigold";
inline constexpr const char* kProductEdition = "Linux";
inline constexpr const char* kProductShortVersion = "4.0";
inline constexpr const char* kProductBuild = "400";
inline constexpr const char* kProductWebAddress = "https://www.quillon.com/marigold/";
// The visible text of the web address's link in an RTF log; also the domain no report goes to.
inline constexpr const char* kMakerDomain = kMakerMailDomain;

}  // namespace marigold
