#include "logging/email_report.h"

#include <syslog.h>

#include <cstdio>
#include <optional>

#include "logging/email_account.h"
#include "logging/product_identity.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

std::size_t CountCharacters(const std::string& text) {
  std::size_t count = 0;
  for (unsigned char c : text) count += (c & 0xC0) != 0x80;
  return count;
}

std::string AttachmentName(const std::string& logFilePath) {
  if (logFilePath.empty()) return "MGLog.txt";
  const std::size_t slash = logFilePath.rfind('/');
  std::string name = slash == std::string::npos ? logFilePath : logFilePath.substr(slash + 1);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) name.erase(dot);
  return name + ".txt";
}

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

}  // namespace

std::vector<std::string> SplitEmailRecipients(const std::string& text) {
  const std::string marker = "###___###";
  const std::string marked = ReplaceAll(ReplaceAll(ReplaceAll(text, ", ", marker), ",", marker), " ", marker);
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start <= marked.size()) {
    const std::size_t at = marked.find(marker, start);
    const std::string piece = marked.substr(start, at == std::string::npos ? std::string::npos : at - start);
    if (!piece.empty()) out.push_back(piece);
    if (at == std::string::npos) break;
    start = at + marker.size();
  }
  return out;
}

std::optional<PlistDict> ReadSendEmailDict(const PlistDict& prefs) {
  const PlistData* data = prefs.GetData("prefSendEmailDict");
  if (data == nullptr) return std::nullopt;
  return GetWellDict(*data);
}

MailServer MailServerOf(const PlistDict& account) {
  MailServer server;
  server.host = account.GetString("mSendEmailSMTP");
  server.port = account.GetString("mSendEmailPort");
  server.user = account.GetString("mSendEmailAccountID");
  server.password = account.GetString("mSendEmailPassword");
  const std::int64_t tls = account.GetInt("mSendEmailUseSSL", -1);
  server.tls = tls == 1 ? MailTls::kRequired : tls == 0 ? MailTls::kNone : MailTls::kWhenOffered;
  return server;
}

std::string MailText(const std::string& logText) {
  std::string out;
  out.reserve(logText.size());
  for (std::size_t i = 0; i < logText.size();) {
    const unsigned char c = static_cast<unsigned char>(logText[i]);
    if (c == '\r') {
      out += '\n';
      i += (i + 1 < logText.size() && logText[i + 1] == '\n') ? 2 : 1;
      continue;
    }
    std::size_t length = c < 0x80 ? 1 : (c & 0xE0) == 0xC0 ? 2 : (c & 0xF0) == 0xE0 ? 3 : (c & 0xF8) == 0xF0 ? 4 : 0;
    bool valid = length > 0 && i + length <= logText.size() && !(length == 2 && c < 0xC2);
    for (std::size_t k = 1; valid && k < length; ++k)
      valid = (static_cast<unsigned char>(logText[i + k]) & 0xC0) == 0x80;
    if (!valid) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
      out += escaped;
      ++i;
      continue;
    }
    out.append(logText, i, length);
    i += length;
  }
  return out;
}

bool SendEmailWithSubject(const PlistDict& account, const std::string& recipient, const std::string& subject,
                          const std::string& logText, const std::string& logFilePath, const MailSeams& seams,
                          std::string* error) {
  auto fail = [error](const std::string& why) {
    if (error) *error = why;
    return false;
  };
  if (ContainsIgnoringCase(recipient, kMakerDomain)) return fail(GLS("The recipient is not accepted."));
  MailServer server = MailServerOf(account);
  if (server.host.empty()) return fail(GLS("Missing parameter \"SMTP\" on the Send log via email panel."));
  server.caFile = seams.extraCaFile;

  MailMessage message;
  message.from = account.GetString("mSendEmailFrom");
  message.to = {recipient};
  message.subject = subject;
  message.date = seams.now;
  if (CountCharacters(logText) <= kMaxMailBodyCharacters) {
    message.body = MailText(logText);
  } else {
    // The head of the log (up to the first session) tells what happened; the rest is attached.
    const std::size_t session = logText.find("\u2022 Session");
    if (session != std::string::npos) {
      message.body = MailText(logText.substr(0, session) + "\r" + GLS("Find the whole Log file in the attachment"));
    } else {
      const std::string date = StringWithFormat(DateFromUnixSeconds(seams.now), "EEEE, MMMM dd, yyyy - HH:mm:ss");
      message.body = GLS("Marigold Log File - %@ - See Attachment.");
      message.body = ReplaceAll(message.body, "%@", date);
    }
    message.attachmentName = AttachmentName(logFilePath);
    message.attachmentBytes = ReplaceAll(logText, "\r", "\n");
  }
  const MailResult sent = seams.transport->Send(server, message, seams.cancel);
  if (!sent.ok) return fail(sent.error);
  return true;
}

bool SendEmailTo(const PlistDict& prefs, const std::string& logText, std::int64_t globalErrors,
                 const std::string& logFilePath, const MailSeams& seams,
                 const std::function<void(const std::string&)>& status) {
  if (prefs.GetInt("prefSendEmail") != 1) return true;
  if (prefs.GetInt("prefSendEmailWhen") == 2 && globalErrors == 0) return true;
  const std::optional<PlistDict> account = ReadSendEmailDict(prefs);
  const std::string to = account ? account->GetString("mSendEmailTo") : "";
  if (to.empty() || ContainsIgnoringCase(to, kMakerDomain)) return false;
  const std::string subject =
      GLS(globalErrors < 1 ? "Marigold Log Message: OK" : "Marigold Log Message: Error");
  if (status) status(GLS("\u2022 Sending Email..."));
  const std::vector<std::string> recipients = SplitEmailRecipients(to);
  std::size_t sent = 0;
  for (std::size_t i = 0; i < recipients.size() && i < kMaxMailRecipients; ++i) {
    std::string error;
    if (SendEmailWithSubject(*account, recipients[i], subject, logText, logFilePath, seams, &error)) {
      ++sent;
      continue;
    }
    char line[64];
    std::snprintf(line, sizeof line, "Cannot Send Email (%zu of %zu) to ", i + 1, recipients.size());
    seams.systemLog->Write(LOG_ERR, line + recipients[i] + (error.empty() ? "" : ": " + error));
  }
  if (status) status("");
  return sent == recipients.size();
}

bool SendTestEmail(const PlistDict& account, const MailSeams& seams, std::string* error) {
  std::string reason;
  if (!CheckSendEmailDict(account, &reason)) {
    if (error) *error = reason;
    return false;
  }
  const std::vector<std::string> recipients = SplitEmailRecipients(account.GetString("mSendEmailTo"));
  const std::string subject = GLS("Marigold Test Message");
  const std::string body = GLS("This is a test message sent by Marigold to check the Send Log via email settings.");
  std::string failures;
  for (std::size_t i = 0; i < recipients.size() && i < kMaxMailRecipients; ++i) {
    std::string why;
    if (!SendEmailWithSubject(account, recipients[i], subject, body, "", seams, &why))
      failures += (failures.empty() ? "" : "\r") + recipients[i] + ": " + why;
  }
  if (recipients.size() > kMaxMailRecipients)
    failures += (failures.empty() ? "" : "\r") + GLS("Only the first ten recipients receive the message.");
  if (error) *error = failures;
  return failures.empty();
}

}  // namespace marigold
