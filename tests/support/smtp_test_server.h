// A real SMTP server for the mail tests (aiosmtpd, tests/fixtures/smtp_test_server.py) on
// 127.0.0.1 and an ephemeral port, stopped when the object goes. Messages arrive as text files
// that say who they went to, their subject, body and attachment.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "build_paths.h"
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
    mPid = ::fork();
    if (mPid == 0) {
      std::vector<char*> argv;
      for (std::string& arg : args) argv.push_back(arg.data());
      argv.push_back(nullptr);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    for (int i = 0; i < 200 && mPort == 0; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      mPort = std::atoi(mFolder.ReadFile("port").c_str());
    }
  }
  ~TestSmtpServer() {
    if (mPid > 0) {
      ::kill(mPid, SIGTERM);
      ::waitpid(mPid, nullptr, 0);
    }
  }
  TestSmtpServer(const TestSmtpServer&) = delete;
  TestSmtpServer& operator=(const TestSmtpServer&) = delete;

  int port() const { return mPort; }
  std::string CaFile() const { return mFolder.Join("cert.pem"); }
  // The messages received so far, after waiting (up to 10 s) for at least `count` of them.
  std::vector<std::string> Messages(std::size_t count = 0) const {
    std::vector<std::string> messages;
    for (int i = 0; i < 200; ++i) {
      messages.clear();
      for (std::size_t n = 1;; ++n) {
        const std::string path = mFolder.Join("out/" + std::to_string(n) + ".txt");
        if (!std::filesystem::exists(path)) break;
        messages.push_back(mFolder.ReadFile(path));
      }
      if (messages.size() >= count) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return messages;
  }

 private:
  TempFolder mFolder;
  pid_t mPid = -1;
  int mPort = 0;
};

}  // namespace marigold::testing
