#include "platform/smtp_mail.h"

#include <curl/curl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <ctime>
#include <memory>
#include <random>

namespace marigold {
namespace {

std::string Base64(std::string_view bytes) {
  static const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::size_t i = 0;
  for (; i + 2 < bytes.size(); i += 3) {
    const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) | (static_cast<unsigned char>(bytes[i + 1]) << 8) |
                       static_cast<unsigned char>(bytes[i + 2]);
    out += {kDigits[v >> 18], kDigits[(v >> 12) & 63], kDigits[(v >> 6) & 63], kDigits[v & 63]};
  }
  if (i + 1 == bytes.size()) {
    const unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
    out += {kDigits[v >> 18], kDigits[(v >> 12) & 63], '=', '='};
  } else if (i + 2 == bytes.size()) {
    const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
    out += {kDigits[v >> 18], kDigits[(v >> 12) & 63], kDigits[(v >> 6) & 63], '='};
  }
  return out;
}

std::string DateHeader(double unixSeconds) {
  const std::time_t t = static_cast<std::time_t>(unixSeconds);
  std::tm utc{};
  ::gmtime_r(&t, &utc);
  static const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  char text[64];
  std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d +0000", kDays[utc.tm_wday], utc.tm_mday,
                kMonths[utc.tm_mon], utc.tm_year + 1900, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return text;
}

std::string MessageId(const MailMessage& message) {
  const std::size_t at = message.from.rfind('@');
  const std::string domain = at == std::string::npos ? "localhost" : message.from.substr(at + 1);
  std::random_device random;
  char text[96];
  std::snprintf(text, sizeof text, "<%lld.%08x%08x@", static_cast<long long>(message.date), random(), random());
  return text + domain + ">";
}

// Printable ASCII passes through a header unchanged; CR and LF never do (no injected headers).
std::string HeaderSafe(const std::string& text) {
  std::string out;
  for (char c : text)
    if (c != '\r' && c != '\n') out += c;
  return out;
}

struct CurlFree {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
  void operator()(curl_mime* mime) const { curl_mime_free(mime); }
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

int Progress(void* cancel, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  const auto* flag = static_cast<const std::atomic<bool>*>(cancel);
  return flag != nullptr && flag->load() ? 1 : 0;
}

std::once_flag gCurlInit;

}  // namespace

std::string EncodedMailSubject(const std::string& subject) {
  const std::string safe = HeaderSafe(subject);
  bool ascii = true;
  for (unsigned char c : safe) ascii = ascii && c >= 0x20 && c < 0x7f;
  if (ascii) return safe;
  // Encoded words stay under 76 characters, and none splits a character.
  std::string out;
  std::size_t start = 0;
  while (start < safe.size()) {
    std::size_t end = std::min(safe.size(), start + 45);
    while (end < safe.size() && (static_cast<unsigned char>(safe[end]) & 0xC0) == 0x80) --end;
    if (!out.empty()) out += "\r\n ";
    out += "=?UTF-8?B?" + Base64(std::string_view(safe).substr(start, end - start)) + "?=";
    start = end;
  }
  return out;
}

MailResult SendMailMessage(const MailServer& server, const MailMessage& message, const std::atomic<bool>* cancel) {
  std::call_once(gCurlInit, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
  MailResult result;
  if (server.host.empty()) {
    result.error = "no SMTP server";
    return result;
  }
  if (message.to.empty()) {
    result.error = "no recipient";
    return result;
  }
  std::unique_ptr<CURL, CurlFree> curl(curl_easy_init());
  if (!curl) {
    result.error = "cannot start the mail transport";
    return result;
  }
  CURL* c = curl.get();
  const bool implicitTls = server.port == "465";
  const std::string url = std::string(implicitTls ? "smtps://" : "smtp://") + server.host + ":" +
                          (server.port.empty() ? "25" : server.port);
  char errorText[CURL_ERROR_SIZE] = {0};
  curl_easy_setopt(c, CURLOPT_URL, url.c_str());
  curl_easy_setopt(c, CURLOPT_ERRORBUFFER, errorText);
  curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT, server.connectTimeoutSeconds);
  // A server that stops answering half-way must not hold the run for ever.
  curl_easy_setopt(c, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(c, CURLOPT_LOW_SPEED_TIME, 30L);
  curl_easy_setopt(c, CURLOPT_USE_SSL, server.tls == MailTls::kRequired ? static_cast<long>(CURLUSESSL_ALL)
                                       : server.tls == MailTls::kNone   ? static_cast<long>(CURLUSESSL_NONE)
                                                                        : static_cast<long>(CURLUSESSL_TRY));
  if (!server.caFile.empty()) curl_easy_setopt(c, CURLOPT_CAINFO, server.caFile.c_str());
  if (!server.user.empty()) {
    curl_easy_setopt(c, CURLOPT_USERNAME, server.user.c_str());
    curl_easy_setopt(c, CURLOPT_PASSWORD, server.password.c_str());
  }
  const std::string from = "<" + HeaderSafe(message.from) + ">";
  curl_easy_setopt(c, CURLOPT_MAIL_FROM, from.c_str());
  std::unique_ptr<curl_slist, CurlFree> recipients;
  std::string toHeader;
  for (const std::string& to : message.to) {
    recipients.reset(curl_slist_append(recipients.release(), ("<" + HeaderSafe(to) + ">").c_str()));
    toHeader += (toHeader.empty() ? "" : ", ") + HeaderSafe(to);
  }
  curl_easy_setopt(c, CURLOPT_MAIL_RCPT, recipients.get());

  std::unique_ptr<curl_slist, CurlFree> headers;
  for (const std::string& header :
       {"Date: " + DateHeader(message.date), "From: " + HeaderSafe(message.from), "To: " + toHeader,
        "Subject: " + EncodedMailSubject(message.subject), "Message-ID: " + MessageId(message)})
    headers.reset(curl_slist_append(headers.release(), header.c_str()));
  curl_easy_setopt(c, CURLOPT_HTTPHEADER, headers.get());

  std::unique_ptr<curl_mime, CurlFree> mime(curl_mime_init(c));
  curl_mimepart* body = curl_mime_addpart(mime.get());
  curl_mime_data(body, message.body.data(), message.body.size());
  curl_mime_type(body, "text/plain; charset=utf-8");
  // Log lines may be longer than SMTP allows: quoted-printable keeps every line short.
  curl_mime_encoder(body, "quoted-printable");
  if (!message.attachmentName.empty()) {
    curl_mimepart* file = curl_mime_addpart(mime.get());
    curl_mime_data(file, message.attachmentBytes.data(), message.attachmentBytes.size());
    curl_mime_filename(file, message.attachmentName.c_str());
    curl_mime_type(file, "text/plain; charset=utf-8");
    curl_mime_encoder(file, "base64");
  }
  curl_easy_setopt(c, CURLOPT_MIMEPOST, mime.get());
  curl_easy_setopt(c, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(c, CURLOPT_XFERINFOFUNCTION, &Progress);
  curl_easy_setopt(c, CURLOPT_XFERINFODATA, cancel);

  const CURLcode code = curl_easy_perform(c);
  if (code == CURLE_OK) {
    result.ok = true;
    return result;
  }
  result.error = errorText[0] != '\0' ? errorText : curl_easy_strerror(code);
  return result;
}

MailTransport& SmtpMailTransport() {
  static MailTransport transport;
  return transport;
}

}  // namespace marigold
