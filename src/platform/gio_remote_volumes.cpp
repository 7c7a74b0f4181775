#include "platform/gio_remote_volumes.h"

#include <gio/gio.h>

#include <memory>

namespace marigold {
namespace {

template <typename T>
struct GUnref {
  void operator()(T* object) const {
    if (object != nullptr) g_object_unref(object);
  }
};
template <typename T>
using GPtr = std::unique_ptr<T, GUnref<T>>;

struct GFreeString {
  void operator()(char* text) const { g_free(text); }
};

// One asynchronous GIO call, run to its end on a main context of its own.
struct PendingCall {
  GMainContext* context = g_main_context_new();
  GMainLoop* loop = g_main_loop_new(context, FALSE);
  GError* error = nullptr;
  bool ok = false;
  // The mount operation's answers: how often the password was asked for.
  int passwordAsks = 0;
  const RemoteVolume* volume = nullptr;

  PendingCall() { g_main_context_push_thread_default(context); }
  ~PendingCall() {
    g_main_context_pop_thread_default(context);
    g_main_loop_unref(loop);
    g_main_context_unref(context);
    if (error != nullptr) g_error_free(error);
  }
  void Run() { g_main_loop_run(loop); }
};

void AskPassword(GMountOperation* operation, const char*, const char*, const char*, GAskPasswordFlags flags,
                 gpointer data) {
  PendingCall& call = *static_cast<PendingCall*>(data);
  ++call.passwordAsks;
  // A second question means the first answer was refused: asking again would loop for ever.
  if (call.passwordAsks > 1) {
    g_mount_operation_reply(operation, G_MOUNT_OPERATION_ABORTED);
    return;
  }
  const RemoteVolume& volume = *call.volume;
  if (volume.password.empty() && (flags & G_ASK_PASSWORD_ANONYMOUS_SUPPORTED) != 0) {
    g_mount_operation_set_anonymous(operation, TRUE);
  } else {
    g_mount_operation_set_username(operation, volume.user.c_str());
    g_mount_operation_set_password(operation, volume.password.c_str());
    g_mount_operation_set_password_save(operation, G_PASSWORD_SAVE_NEVER);
  }
  g_mount_operation_reply(operation, G_MOUNT_OPERATION_HANDLED);
}

// Questions (an unknown host key, for one) are declined: nobody is there to judge them, and a
// backup must not trust a server that nobody vouched for.
void AskQuestion(GMountOperation* operation, const char*, const char**, gpointer) {
  g_mount_operation_reply(operation, G_MOUNT_OPERATION_ABORTED);
}

GPtr<GMountOperation> NewMountOperation(PendingCall& call) {
  GPtr<GMountOperation> operation(g_mount_operation_new());
  g_signal_connect(operation.get(), "ask-password", G_CALLBACK(AskPassword), &call);
  g_signal_connect(operation.get(), "ask-question", G_CALLBACK(AskQuestion), &call);
  return operation;
}

GPtr<GFile> LocationOf(const RemoteVolume& volume) {
  return GPtr<GFile>(g_file_new_for_uri(RemoteLocationText(volume).c_str()));
}

MountResult ResultOf(const PendingCall& call) {
  MountResult result;
  if (call.ok) return result;
  const int code = call.error != nullptr && call.error->domain == G_IO_ERROR ? call.error->code : G_IO_ERROR_FAILED;
  result.code = MountCodeForGioError(code, call.passwordAsks > 1);
  if (call.error != nullptr) result.detail = call.error->message;
  return result;
}

}  // namespace

int MountCodeForGioError(int gioErrorCode, bool passwordRefused) {
  if (passwordRefused) return kMountNotAuthorized;
  switch (gioErrorCode) {
    case G_IO_ERROR_ALREADY_MOUNTED: return kMountAlreadyMounted;
    case G_IO_ERROR_PERMISSION_DENIED: return kMountNotAuthorized;
    case G_IO_ERROR_HOST_NOT_FOUND: return kMountHostLookupFailed;
    case G_IO_ERROR_CONNECTION_REFUSED: return kMountNoServers;
    case G_IO_ERROR_NETWORK_UNREACHABLE:
    case G_IO_ERROR_HOST_UNREACHABLE: return kMountUnableToPing;
    case G_IO_ERROR_TIMED_OUT: return kMountNoAnswer;
    case G_IO_ERROR_INVALID_ARGUMENT:
    case G_IO_ERROR_INVALID_FILENAME: return kMountParameterError;
    case G_IO_ERROR_NOT_SUPPORTED:
    case G_IO_ERROR_NOT_MOUNTABLE_FILE: return kMountUrlNotValid;
    case G_IO_ERROR_BUSY: return kMountBusy;
    case G_IO_ERROR_CANCELLED:
    case G_IO_ERROR_FAILED_HANDLED: return kMountCancelled;
    default: return -36;  // an input/output error, reported with its number
  }
}

std::vector<MountedVolume> GioMountedRemoteVolumes() {
  std::vector<MountedVolume> volumes;
  PendingCall call;
  GPtr<GVolumeMonitor> monitor(g_volume_monitor_get());
  GList* mounts = g_volume_monitor_get_mounts(monitor.get());
  for (GList* item = mounts; item != nullptr; item = item->next) {
    GMount* mount = G_MOUNT(item->data);
    GPtr<GFile> root(g_mount_get_root(mount));
    std::unique_ptr<char, GFreeString> uri(g_file_get_uri(root.get()));
    std::unique_ptr<char, GFreeString> path(g_file_get_path(root.get()));
    GUri* parsed = uri ? g_uri_parse(uri.get(), G_URI_FLAGS_NONE, nullptr) : nullptr;
    if (parsed != nullptr && g_strcmp0(g_uri_get_scheme(parsed), "file") != 0) {
      MountedVolume volume;
      volume.scheme = g_uri_get_scheme(parsed);
      if (const char* user = g_uri_get_user(parsed)) volume.user = user;
      if (const char* host = g_uri_get_host(parsed)) volume.host = host;
      if (g_uri_get_port(parsed) > 0) volume.host += ":" + std::to_string(g_uri_get_port(parsed));
      volume.path = g_uri_get_path(parsed);
      if (path) volume.mountPoint = path.get();
      volumes.push_back(std::move(volume));
    }
    if (parsed != nullptr) g_uri_unref(parsed);
  }
  g_list_free_full(mounts, g_object_unref);
  return volumes;
}

std::optional<std::string> GioMountedRemotePath(const RemoteVolume& volume) {
  PendingCall call;
  GPtr<GFile> location = LocationOf(volume);
  GError* error = nullptr;
  GPtr<GMount> mount(g_file_find_enclosing_mount(location.get(), nullptr, &error));
  if (error != nullptr) g_error_free(error);
  if (!mount) return std::nullopt;
  std::unique_ptr<char, GFreeString> path(g_file_get_path(location.get()));
  if (!path) {
    GPtr<GFile> root(g_mount_get_root(mount.get()));
    path.reset(g_file_get_path(root.get()));
  }
  return path ? std::string(path.get()) : std::string();
}

MountResult GioMountRemote(const RemoteVolume& volume) {
  PendingCall call;
  call.volume = &volume;
  GPtr<GFile> location = LocationOf(volume);
  GPtr<GMountOperation> operation = NewMountOperation(call);
  g_file_mount_enclosing_volume(
      location.get(), G_MOUNT_MOUNT_NONE, operation.get(), nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        PendingCall& done = *static_cast<PendingCall*>(data);
        done.ok = g_file_mount_enclosing_volume_finish(G_FILE(source), result, &done.error) != FALSE;
        g_main_loop_quit(done.loop);
      },
      &call);
  call.Run();
  MountResult result = ResultOf(call);
  if (result.code == 0 || result.code == kMountAlreadyMounted) {
    std::unique_ptr<char, GFreeString> path(g_file_get_path(location.get()));
    if (path) result.mountPoint = path.get();
  }
  return result;
}

MountResult GioUnmountRemote(const RemoteVolume& volume) {
  PendingCall call;
  call.volume = &volume;
  GPtr<GFile> location = LocationOf(volume);
  GError* error = nullptr;
  GPtr<GMount> mount(g_file_find_enclosing_mount(location.get(), nullptr, &error));
  if (!mount) {
    MountResult result;
    result.code = kMountParameterError;
    if (error != nullptr) {
      result.detail = error->message;
      g_error_free(error);
    }
    return result;
  }
  GPtr<GMountOperation> operation = NewMountOperation(call);
  g_mount_unmount_with_operation(
      mount.get(), G_MOUNT_UNMOUNT_NONE, operation.get(), nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        PendingCall& done = *static_cast<PendingCall*>(data);
        done.ok = g_mount_unmount_with_operation_finish(G_MOUNT(source), result, &done.error) != FALSE;
        g_main_loop_quit(done.loop);
      },
      &call);
  call.Run();
  return ResultOf(call);
}

}  // namespace marigold
