// The e-mail report: the run log mailed to the account's recipients at the end of a run, and the
// account's test message. Small logs travel in the body; a log longer than 200,000 characters
// goes as a text attachment, with the head of the log in the body. A message that cannot be sent
// is written to the system log and counted; it never changes the run's result.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/smtp_mail.h"
#include "platform/system_log.h"
#include "util/plist_value.h"

namespace marigold {

// Logs up to this many characters go in the body.
inline constexpr std::size_t kMaxMailBodyCharacters = 200000;
// Recipients past this many are not sent to.
inline constexpr std::size_t kMaxMailRecipients = 10;

// What the report needs besides the preferences; tests give their own transport and trust their
// own certificate.
struct MailSeams {
  MailTransport* transport = &SmtpMailTransport();
  std::string extraCaFile;
  SystemLog* systemLog = &SyslogSystemLog();
  const std::atomic<bool>* cancel = nullptr;  // set to interrupt sending
  double now = 0;                             // the Date header's moment (seconds since 1970)
};

// The recipient text split on ", ", "," and " ", empty pieces left out.
std::vector<std::string> SplitEmailRecipients(const std::string& text);

// The account dictionary kept scrambled in prefSendEmailDict; nothing when it cannot be read.
std::optional<PlistDict> ReadSendEmailDict(const PlistDict& prefs);
// The SMTP server an account names.
MailServer MailServerOf(const PlistDict& account);

// The text as a mail carries it: "\n" line ends, and bytes that are not UTF-8 shown as "\xNN".
std::string MailText(const std::string& logText);

// One message to one recipient: the log in the body, or attached with the head in the body.
// `logFilePath` names the attachment ("MGLog.txt" when empty). False (with the reason in
// `error`) when the account cannot send or the server refuses.
bool SendEmailWithSubject(const PlistDict& account, const std::string& recipient, const std::string& subject,
                          const std::string& logText, const std::string& logFilePath, const MailSeams& seams,
                          std::string* error = nullptr);

// The end-of-run report: true when nothing had to be sent or every message went out.
// `globalErrors` is the run's error count; `status` (may be empty) is shown "• Sending Email..."
// while sending and "" afterwards.
bool SendEmailTo(const PlistDict& prefs, const std::string& logText, std::int64_t globalErrors,
                 const std::string& logFilePath, const MailSeams& seams,
                 const std::function<void(const std::string&)>& status = {});

// Sends the account's test message to its recipients (at most ten); on failure `error` says why
// (a missing account field, or the server's answer). Any thread.
bool SendTestEmail(const PlistDict& account, const MailSeams& seams, std::string* error);

}  // namespace marigold
