// One mail message sent over SMTP (libcurl): the platform's way to mail the run log. A message
// carries a UTF-8 body and at most one attachment; the headers (Date, Message-ID, an encoded
// Subject) are made here, because the transport adds none.
#pragma once

#include <atomic>
#include <string>
#include <vector>

namespace marigold {

// How the connection is protected: required, never, or used when the server offers it.
enum class MailTls : int { kRequired = 1, kNone = 0, kWhenOffered = -1 };

struct MailServer {
  std::string host;
  std::string port;  // "" for 25; "465" means TLS from the first byte
  std::string user;  // "" sends without logging in
  std::string password;
  MailTls tls = MailTls::kWhenOffered;
  long connectTimeoutSeconds = 5;
  std::string caFile;  // certificates to trust besides the system's ("" = the system's only)
};

struct MailMessage {
  std::string from;
  std::vector<std::string> to;
  std::string subject;  // UTF-8
  std::string body;     // UTF-8
  std::string attachmentName;   // "" when nothing is attached
  std::string attachmentBytes;  // sent as a UTF-8 text file
  double date = 0;  // seconds since 1970 UTC, for the Date header
};

struct MailResult {
  bool ok = false;
  std::string error;  // a readable reason when not ok
};

// Sends `message` through `server` and waits for the server's answer. `cancel`, when given and
// set, ends the transfer early (a failure). Any thread; one call per thread at a time.
MailResult SendMailMessage(const MailServer& server, const MailMessage& message,
                           const std::atomic<bool>* cancel = nullptr);

// The Subject header's value: ASCII as it is, anything else as UTF-8 encoded words.
std::string EncodedMailSubject(const std::string& subject);

// The mail transport as a seam: the e-mail report sends through this, tests may count calls.
class MailTransport {
 public:
  virtual ~MailTransport() = default;
  virtual MailResult Send(const MailServer& server, const MailMessage& message, const std::atomic<bool>* cancel) {
    return SendMailMessage(server, message, cancel);
  }
};

// SMTP through libcurl.
MailTransport& SmtpMailTransport();

}  // namespace marigold
