// The mail account dictionary that the preferences keep (scrambled) for the e-mail report: its
// defaults and the checks run before it is accepted.
#pragma once

#include <string>
#include <string_view>

#include "util/plist_value.h"

namespace marigold {

// Recipients may not be at the maker's own domain: the report is never mailed to the maker.
inline constexpr const char* kMakerMailDomain = "marigold.example";

// Every account string empty, mSendEmailUseSSL -1 (use TLS when the server offers it).
PlistDict GetSendEmailDefaultDict();

// True for a plausible address: at least 5 characters, not starting or ending with "." or "@",
// holding "@" and ".", never "@.", and not at the maker's domain (ignoring case).
bool CheckEmailRecipient(std::string_view address);

// Checks sender, recipient, account ID and SMTP host, in that order. On failure returns false and
// puts the localised reason for the first missing one in `reason` (when given).
bool CheckSendEmailDict(const PlistDict& account, std::string* reason = nullptr);

// The reason given when the account cannot be checked at all (for instance it cannot be read).
std::string MissingEmailParameterText();

}  // namespace marigold
