#include "logging/email_account.h"

#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {

PlistDict GetSendEmailDefaultDict() {
  return PlistDict{
      {"mSendEmailTo", ""},
      {"mSendEmailFrom", ""},
      {"mSendEmailAccountID", ""},
      {"mSendEmailSMTP", ""},
      {"mSendEmailPort", ""},
      {"mSendEmailPassword", ""},
      {"mSendEmailUseSSL", std::int64_t{-1}},
  };
}

bool CheckEmailRecipient(std::string_view address) {
  if (address.size() < 5) return false;
  if (address.front() == '.' || address.front() == '@') return false;
  if (address.back() == '.' || address.back() == '@') return false;
  if (!Contains(address, "@") || !Contains(address, ".")) return false;
  if (Contains(address, "@.")) return false;
  return !ContainsIgnoringCase(address, kMakerMailDomain);
}

std::string MissingEmailParameterText() {
  return GLS("Missing parameter on the Send log via email panel.");
}

bool CheckSendEmailDict(const PlistDict& account, std::string* reason) {
  auto fail = [reason](const char* text) {
    if (reason) *reason = GLS(text);
    return false;
  };
  if (account.GetString("mSendEmailFrom").empty())
    return fail("Missing parameter \"Email From\" on the Send Log via email panel.");
  if (!CheckEmailRecipient(account.GetString("mSendEmailTo")))
    return fail("Missing parameter \"Email To\" on the Send log via email panel.");
  if (account.GetString("mSendEmailAccountID").empty())
    return fail("Missing parameter \"Account ID\" on the Send log via email panel.");
  if (account.GetString("mSendEmailSMTP").empty())
    return fail("Missing parameter \"SMTP\" on the Send log via email panel.");
  return true;
}

}  // namespace marigold
