// A real SMTP server for the mail tests (aiosmtpd, tests/fixtures/smtp_test_server.py) on
// 127.0.0.1 and an ephemeral port, stopped when the object goes. Messages arrive as text files
// that say who they went to, their subject, body and attachment.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "build_paths.h"
#include "support/child_process.h"
#include "support/temp_folder.h"

namespace marigold::testing {

struct SmtpServerOptions {
  bool offerTls = false;    // STARTTLS with a throwaway self-signed certificate
  bool requireTls = false;  // no mail before STARTTLS
  std::string login;        // "user:password" that must log in; "" = no login
};

class TestSmtpServer {
 public:
  explicit TestSmtpServer(const SmtpServerOptions& options = {}) {
    std::filesystem::create_directories(mFolder.Join("out"));
    std::vector<std::string> args = {"/usr/bin/python3", std::string(MARIGOLD_FIXTURES) + "/smtp_test_server.py",
                                     "--port-file", mFolder.Join("port"), "--out", mFolder.Join("out")};
    if (options.offerTls) {
      const std::string make = "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
                               "-addext subjectAltName=IP:127.0.0.1 -keyout '" + mFolder.Join("key.pem") +
                               "' -out '" + CaFile() + "' 2>/dev/null";
      if (std::system(make.c_str()) != 0) return;
      args.insert(args.end(), {"--cert", CaFile(), "--key", mFolder.Join("key.pem")});
    }
    if (options.requireTls) args.push_back("--require-tls");
    if (!options.login.empty()) args.insert(args.end(), {"--login", options.login});
    if ((mPid = Spawn(args)) > 0) WaitFor([&] { return (mPort = std::atoi(mFolder.ReadFile("port").c_str())) != 0; }, 200);
  }
  ~TestSmtpServer() { End(mPid); }
  TestSmtpServer(const TestSmtpServer&) = delete;
  TestSmtpServer& operator=(const TestSmtpServer&) = delete;

  int port() const { return mPort; }
  std::string CaFile() const { return mFolder.Join("cert.pem"); }
  // The messages received so far, after waiting (up to 10 s) for at least `count` of them.
  std::vector<std::string> Messages(std::size_t count = 0) const {
    std::vector<std::string> messages;
    WaitFor([&] {
      messages.clear();
      for (std::size_t n = 1; std::filesystem::exists(mFolder.Join("out/" + std::to_string(n) + ".txt")); ++n)
        messages.push_back(mFolder.ReadFile("out/" + std::to_string(n) + ".txt"));
      return messages.size() >= count;
    }, 200);
    return messages;
  }

 private:
  TempFolder mFolder;
  pid_t mPid = -1;
  int mPort = 0;
};

}  // namespace marigold::testing
