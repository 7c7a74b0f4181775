// A real server volume for tests: sshd on 127.0.0.1 with a throwaway user and password, and GVfs
// on a private session bus, all inside a private mount namespace of the test process, so that no
// user, key or mount is seen outside it and every mount goes when the test ends. Root only.
#pragma once

#include <sys/types.h>

#include <string>

#include "support/temp_folder.h"

namespace marigold {

class SftpServer {
 public:
  static constexpr const char* kUser = "mgsftp";
  static constexpr const char* kPassword = "moss-and-rain";

  SftpServer() = default;
  ~SftpServer();
  SftpServer(const SftpServer&) = delete;
  SftpServer& operator=(const SftpServer&) = delete;

  // Starts everything; "" on success, else why it could not (the test then skips).
  std::string Start();
  void StopServer();  // the server goes down; GVfs stays

  int port() const { return mPort; }
  std::string host() const { return "127.0.0.1:" + std::to_string(mPort); }
  // A folder on the server that the user owns, as a path on the server.
  const std::string& remoteFolder() const { return mRemoteFolder; }
  // Where GVfs shows the mounted server locally.
  std::string fuseRoot() const;

 private:
  TempFolder mTemp;
  int mPort = 0;
  std::string mRemoteFolder;
  pid_t mSshd = -1, mBus = -1, mGvfsd = -1, mFuse = -1;
};

}  // namespace marigold
