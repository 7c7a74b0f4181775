#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <unistd.h>

#include <chrono>

#include "logging/email_report.h"
#include "support/smtp_test_server.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

using testing::SmtpServerOptions;
using testing::TestSmtpServer;

PlistDict Account(int port, const std::string& to = "ann@example.org", std::int64_t tls = -1,
                  const std::string& user = "", const std::string& password = "") {
  return PlistDict{{"mSendEmailTo", to},
                   {"mSendEmailFrom", "marigold@example.org"},
                   {"mSendEmailAccountID", user.empty() ? "nobody" : user},
                   {"mSendEmailSMTP", "127.0.0.1"},
                   {"mSendEmailPort", std::to_string(port)},
                   {"mSendEmailPassword", password},
                   {"mSendEmailUseSSL", tls}};
}

PlistDict Prefs(const PlistDict& account, std::int64_t when = 1) {
  return PlistDict{{"prefSendEmail", 1}, {"prefSendEmailWhen", when}, {"prefSendEmailDict", SetWellDict(account)}};
}

TEST(EmailReport, EveryRecipientGetsTheLogInTheBody) {
  TestSmtpServer server;
  const std::string log = "\u2022 Errors: 1\r\u221A Can't copy \"caf\xe9.txt\"\r";
  EXPECT_TRUE(SendEmailTo(Prefs(Account(server.port(), " a@x.org,,b@y.org c@z.org  ")), log, 1, "", {}));
  const std::vector<std::string> messages = server.Messages(3);
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_NE(messages[0].find("to: a@x.org\n"), std::string::npos);
  EXPECT_NE(messages[2].find("to: c@z.org\n"), std::string::npos);
  EXPECT_NE(messages[0].find("subject: Marigold Log Message: Error\n"), std::string::npos);
  // Line ends become the platform's; a name that is not UTF-8 still shows its byte.
  EXPECT_NE(messages[0].find("--body--\n\u2022 Errors: 1\n\u221A Can't copy \"caf\\xE9.txt\"\n"), std::string::npos);
  EXPECT_NE(messages[0].find("attachment: \n"), std::string::npos);
  EXPECT_NE(messages[0].find("id: <"), std::string::npos);
}

TEST(EmailReport, CleanRunSendsNothingWhenOnlyErrorsAreMailed) {
  TestSmtpServer server;
  EXPECT_TRUE(SendEmailTo(Prefs(Account(server.port()), 2), "log", 0, "", {}));
  EXPECT_TRUE(SendEmailTo(PlistDict{{"prefSendEmail", 0}}, "log", 3, "", {}));
  EXPECT_TRUE(server.Messages().empty());
  // A recipient at the maker's own domain is refused outright.
  EXPECT_FALSE(SendEmailTo(Prefs(Account(server.port(), "me@marigold.example")), "log", 1, "", {}));
}

TEST(EmailReport, LongLogsTravelAsAttachment) {
  TestSmtpServer server;
  const std::string head = "\u2022 Errors: 0\r";
  const std::string fits = head + std::string(200000 - 12, 'x');  // "•" is one character
  ASSERT_EQ(fits.size(), 200000u + 2);
  const PlistDict account = Account(server.port());
  EXPECT_TRUE(SendEmailWithSubject(account, "ann@example.org", "s", fits, "/logs/MGLog_1.rtf", {}));
  const std::string over = head + "\u2022 Session: \"one\"\r" + std::string(200000, 'y');
  EXPECT_TRUE(SendEmailWithSubject(account, "ann@example.org", "s \u00e9t\u00e9", over, "/logs/MGLog_1.rtf", {}));
  const std::vector<std::string> messages = server.Messages(2);
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_NE(messages[0].find("attachment: \n"), std::string::npos);
  EXPECT_NE(messages[1].find("subject: s \u00e9t\u00e9\n"), std::string::npos);
  EXPECT_NE(messages[1].find("attachment: MGLog_1.txt\n--body--\n\u2022 Errors: 0\n\nFind the whole Log file in the attachment"),
            std::string::npos);
  EXPECT_NE(messages[1].find("--attachment--\n\u2022 Errors: 0\n\u2022 Session: \"one\"\nyyyy"), std::string::npos);
}

struct ServerCase {
  const char* name;
  SmtpServerOptions server;
  std::int64_t tls;
  const char* user;
  const char* password;
  bool trustCertificate;
  bool sent;
};

class MailServers : public ::testing::TestWithParam<ServerCase> {};

TEST_P(MailServers, SendOrRefuse) {
  const ServerCase& c = GetParam();
  TestSmtpServer server(c.server);
  MailSeams seams;
  if (c.trustCertificate) seams.extraCaFile = server.CaFile();
  std::string error;
  const bool sent = SendEmailWithSubject(Account(server.port(), "ann@example.org", c.tls, c.user, c.password),
                                         "ann@example.org", "s", "body", "", seams, &error);
  EXPECT_EQ(sent, c.sent) << error;
  EXPECT_EQ(server.Messages(c.sent ? 1 : 0).size(), c.sent ? 1u : 0u);
  EXPECT_EQ(error.empty(), c.sent);
}

INSTANTIATE_TEST_SUITE_P(
    Smtp, MailServers,
    ::testing::Values(ServerCase{"LoginAccepted", {false, false, "ann:secret"}, 0, "ann", "secret", false, true},
                      ServerCase{"LoginRefused", {false, false, "ann:secret"}, 0, "ann", "wrong", false, false},
                      ServerCase{"TlsRequiredButNotOffered", {}, 1, "", "", false, false},
                      ServerCase{"StartTlsAndLogin", {true, true, "ann:secret"}, 1, "ann", "secret", true, true},
                      ServerCase{"UntrustedCertificate", {true, true, ""}, 1, "", "", false, false},
                      ServerCase{"TlsWhenOfferedFallsBackToPlain", {}, -1, "", "", false, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(EmailReport, SilentServerAndUnknownHostFailReadably) {
  // A server that accepts the connection and never says a word.
  const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 4), 0);
  socklen_t length = sizeof address;
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  std::string error;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(SendEmailWithSubject(Account(ntohs(address.sin_port)), "ann@example.org", "s", "b", "", {}, &error));
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_GT(seconds, 4.0);
  EXPECT_LT(seconds, 10.0);
  EXPECT_FALSE(error.empty());
  ::close(listener);

  PlistDict account = Account(25);
  account.Set("mSendEmailSMTP", "no-such-host.invalid");
  EXPECT_FALSE(SendEmailWithSubject(account, "ann@example.org", "s", "b", "", {}, &error));
  EXPECT_NE(error.find("resolve"), std::string::npos) << error;
}

}  // namespace
}  // namespace marigold
