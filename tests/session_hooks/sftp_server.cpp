#include "session_hooks/sftp_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "platform/mount_table.h"
#include "platform/process_runner.h"
#include "support/child_process.h"

namespace marigold {
namespace {

using testing::End;
using testing::Spawn;
using testing::WaitFor;

constexpr uid_t kUid = 54329;

ProcessOutcome Run(std::vector<std::string> argv) {
  ProcessRequest request;
  request.argv = std::move(argv);
  return RunProcess(request);
}

int FreePort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  int port = 0;
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
      ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0)
    port = ntohs(address.sin_port);
  ::close(fd);
  return port;
}

bool Accepts(int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return ok;
}

bool IsMountPoint(const std::string& path) {
  for (const MountEntry& entry : ReadMountTable()) {
    if (entry.mountPoint == path) return true;
  }
  return false;
}

// Mounts a copy of `file` with `line` added over it, for this namespace only.
bool OverlayWithLine(const TempFolder& temp, const std::string& file, const std::string& line) {
  const std::string name = file.substr(file.rfind('/') + 1);
  const std::string copy = temp.WriteFile("etc/" + name, temp.ReadFile(file) + line + "\n");
  ::chmod(copy.c_str(), name == "shadow" ? 0640 : 0644);
  return ::mount(copy.c_str(), file.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

}  // namespace

std::string SftpServer::Start() {
  if (::geteuid() != 0) return "a server volume needs root (a private mount namespace and sshd)";
  if (::access("/usr/sbin/sshd", X_OK) != 0 || ::access("/usr/libexec/gvfsd", X_OK) != 0)
    return "openssh-server and gvfs are not installed (scripts/install-deps.sh)";
  if (::unshare(CLONE_NEWNS) != 0) return "cannot make a private mount namespace";
  if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return "cannot make mounts private";

  // The server's own folders, the user and the client's trust in the key, in this namespace only.
  if (::mount("tmpfs", "/run", "tmpfs", 0, "mode=0755") != 0) return "cannot mount a private /run";
  ::mkdir("/run/sshd", 0755);
  const std::string home = mTemp.Join("home");
  mRemoteFolder = home + "/backup";
  ::mkdir(home.c_str(), 0755);
  ::mkdir(mRemoteFolder.c_str(), 0755);
  ::chmod(mTemp.Path().c_str(), 0755);
  if (::chown(home.c_str(), kUid, kUid) != 0 || ::chown(mRemoteFolder.c_str(), kUid, kUid) != 0)
    return "cannot give the user a home";
  const ProcessOutcome hash = Run({"openssl", "passwd", "-6", kPassword});
  if (hash.exitStatus != 0) return "cannot hash the password";
  const std::string hashed = hash.output.substr(0, hash.output.find('\n'));
  if (!OverlayWithLine(mTemp, "/etc/passwd", std::string(kUser) + ":x:54329:54329::" + home + ":/bin/sh") ||
      !OverlayWithLine(mTemp, "/etc/shadow", std::string(kUser) + ":" + hashed + ":19000:0:99999:7:::"))
    return "cannot add the throwaway user";

  const std::string key = mTemp.Join("host_key");
  if (Run({"ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", key}).exitStatus != 0) return "ssh-keygen failed";
  mPort = FreePort();
  const std::string config = mTemp.WriteFile(
      "sshd_config", "Port " + std::to_string(mPort) + "\nListenAddress 127.0.0.1\nHostKey " + key +
                         "\nPasswordAuthentication yes\nKbdInteractiveAuthentication no\nUsePAM yes\n"
                         "PidFile none\nStrictModes no\nSubsystem sftp internal-sftp\n");
  mSshd = Spawn({"/usr/sbin/sshd", "-D", "-e", "-f", config});
  if (mSshd < 0 || !WaitFor([&] { return Accepts(mPort); })) return "sshd did not start";

  const passwd* root = ::getpwuid(::geteuid());
  const std::string rootHome = root != nullptr ? root->pw_dir : "/root";
  if (::mount("tmpfs", rootHome.c_str(), "tmpfs", 0, "mode=0700") != 0) return "cannot mount a private home";
  ::mkdir((rootHome + "/.ssh").c_str(), 0700);
  const std::string publicKey = mTemp.ReadFile(key + ".pub");
  mTemp.WriteFile(rootHome + "/.ssh/known_hosts", "[127.0.0.1]:" + std::to_string(mPort) + " " + publicKey);

  // A session bus and GVfs of our own; GIO in this process reads these before its first use.
  const std::string runtime = mTemp.Join("runtime");
  ::mkdir(runtime.c_str(), 0700);
  ::setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
  ::setenv("HOME", rootHome.c_str(), 1);
  const ProcessOutcome bus = Run({"dbus-daemon", "--session", "--fork", "--print-address=1", "--print-pid=1"});
  const std::size_t lineEnd = bus.output.find('\n');
  if (bus.exitStatus != 0 || lineEnd == std::string::npos) return "dbus-daemon did not start";
  mBus = std::atoi(bus.output.c_str() + lineEnd + 1);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.output.substr(0, lineEnd).c_str(), 1);
  mGvfsd = Spawn({"/usr/libexec/gvfsd", "--no-fuse"});
  // Until gvfsd owns its name, gvfsd-fuse would have the bus start a second one, and the two race.
  const auto daemonOwnsName = [] {
    return Run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                "org.freedesktop.DBus.NameHasOwner", "string:org.gtk.vfs.Daemon"})
               .output.find("boolean true") != std::string::npos;
  };
  if (mGvfsd < 0 || !WaitFor(daemonOwnsName)) return "gvfsd did not start";
  const std::string fuse = runtime + "/gvfs";
  ::mkdir(fuse.c_str(), 0700);
  mFuse = Spawn({"/usr/libexec/gvfsd-fuse", fuse, "-f"});
  if (mFuse < 0 || !WaitFor([&] { return IsMountPoint(fuse); })) return "GVfs did not start";
  return {};
}

void SftpServer::StopServer() { End(mSshd); }

std::string SftpServer::fuseRoot() const {
  return mTemp.Join("runtime/gvfs/sftp:host=127.0.0.1,port=" + std::to_string(mPort) + ",user=" + kUser);
}

SftpServer::~SftpServer() {
  const std::string fuse = mTemp.Join("runtime/gvfs");
  if (IsMountPoint(fuse)) Run({"fusermount3", "-u", "-z", fuse});
  End(mFuse);
  End(mGvfsd);
  End(mBus);
  End(mSshd);
}

}  // namespace marigold
