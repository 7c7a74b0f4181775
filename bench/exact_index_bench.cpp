// Times the exact-sync index on a real folder pair: walking both trees (the reference), writing
// the index (which also dates every leaf), dating the leaves alone, loading the index, and one
// membership test per item. Prints one line per figure; run by hand, never by the test suite.
//
//   marigold_index_bench SOURCE DEST INDEXFOLDER
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

#include "app/app_paths.h"
#include "engine/error_path.h"
#include "engine/exact_sync_index.h"
#include "platform/linux_file_system.h"
#include "util/quillon_additions.h"

namespace {

using Clock = std::chrono::steady_clock;

class SilentProxy : public marigold::AppkitProxy {
 public:
  int Alert(const marigold::AlertRequest&) override { return 0; }
  int AskReplace(const marigold::ReplaceRequest&) override { return marigold::kReplaceResultSkip; }
  bool ShowPreview(marigold::PreviewEditor&) override { return true; }
};

double Seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

// Resident and peak resident memory of this process, in MiB.
std::pair<double, double> Memory() {
  std::ifstream status("/proc/self/status");
  std::string line;
  double rss = 0, peak = 0;
  while (std::getline(status, line)) {
    if (line.rfind("VmRSS:", 0) == 0) rss = std::stod(line.substr(6)) / 1024;
    if (line.rfind("VmHWM:", 0) == 0) peak = std::stod(line.substr(6)) / 1024;
  }
  return {rss, peak};
}

// Every item below `folder`, depth first, as the index writer lists them.
void Walk(marigold::FileSystem& fs, const std::string& folder,
          const std::function<void(const std::string&, bool)>& visit) {
  auto listed = fs.ListFolder(folder);
  if (!listed) return;
  for (const marigold::FolderEntry& entry : listed.Value()) {
    const std::string path = marigold::JoinPath(folder, entry.name);
    const bool isDir = entry.attributes.IsReallyFolder();
    visit(path, isDir);
    if (isDir) Walk(fs, path, visit);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s SOURCE DEST INDEXFOLDER\n", argv[0]);
    return 2;
  }
  const std::string source = argv[1], dest = argv[2], indexFolder = argv[3];
  marigold::LinuxFileSystem fs;
  SilentProxy proxy;
  marigold::RunServices services;
  marigold::PlistDict preferences;
  marigold::RunState state;
  marigold::ErrorPath errors(state, proxy, preferences);
  marigold::EngineContext context{state, fs, proxy, services, errors, preferences};
  state.gSourceFolder = source;
  state.gDestFolder = dest;
  state.session.gIsSyncOn = true;
  state.session.gIsExactOn = true;
  state.mExecutedBy = marigold::kExecutedByTimer;
  state.gStartSyncDateTime = marigold::Now();
  state.gStartSyncDateTimeUTC = static_cast<std::int64_t>(marigold::UnixSecondsFromDate(state.gStartSyncDateTime));

  std::size_t items = 0;
  auto start = Clock::now();
  for (const std::string& root : {source, dest}) Walk(fs, root, [&](const std::string&, bool) { ++items; });
  const double walk = Seconds(start);
  std::printf("walk both trees: %zu items, %.2f s\n", items, walk);

  start = Clock::now();
  for (const std::string& root : {source, dest}) {
    Walk(fs, root, [&](const std::string& path, bool isDir) {
      if (!isDir) fs.SetBackupDate(path, state.gStartSyncDateTimeUTC);
    });
  }
  const double dating = Seconds(start);
  std::printf("walk and date the leaves: %.2f s (%.2f x walk)\n", dating, dating / walk);

  {
    marigold::ExactSyncIndex index(indexFolder);
    index.Bind(context);
    start = Clock::now();
    const bool written = index.WriteExactSyncIndex(2, marigold::PlistDict());
    const double write = Seconds(start);
    std::printf("write the index (walk, date, stream): %s, %.2f s (%.2f x walk)\n", written ? "ok" : "FAILED", write,
                write / walk);
  }

  const auto before = Memory();
  marigold::ExactSyncIndex index(indexFolder);
  index.Bind(context);
  start = Clock::now();
  const bool loaded = index.ExactSyncFileExists(true);
  const double load = Seconds(start);
  const auto after = Memory();
  std::printf("load the index: %s, %.2f s, resident %.0f -> %.0f MiB, peak %.0f MiB\n", loaded ? "ok" : "FAILED", load,
              before.first, after.first, after.second);

  std::size_t found = 0, asked = 0;
  start = Clock::now();
  Walk(fs, source, [&](const std::string& path, bool) {
    ++asked;
    found += index.ItWasExixting(path, 1) ? 1 : 0;
  });
  const double walkAndAsk = Seconds(start);
  std::printf("walk the source and ask for each item: %zu of %zu found, %.2f s\n", found, asked, walkAndAsk);

  // The same paths asked again without the walk, to see the lookups alone.
  std::vector<std::string> paths;
  paths.reserve(asked);
  Walk(fs, source, [&](const std::string& path, bool) { paths.push_back(path); });
  start = Clock::now();
  found = 0;
  for (const std::string& path : paths) found += index.ItWasExixting(path, 1) ? 1 : 0;
  const double lookups = Seconds(start);
  std::printf("membership alone: %.0f ns per path\n", lookups / static_cast<double>(paths.size()) * 1e9);
  return loaded && found == paths.size() ? 0 : 1;
}
