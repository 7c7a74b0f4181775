// Times a dry-run scan of a generated tree through the run driver twice over: once with the
// session's filters and exclusions off, once with ten active filter rows and a thousand
// exclusions, and prints the ratio. The rows and exclusions match nothing, so both scans walk
// the same items and the difference is the cost of asking.
//
// Usage: marigold_filter_bench [--items N] [--repeat R] [--work DIR]
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "model/document_model.h"
#include "app/preferences.h"
#include "engine/run_driver.h"
#include "options/filters.h"
#include "platform/linux_file_system.h"

namespace marigold {
namespace {

constexpr int kItemsPerFolder = 100;
constexpr std::int64_t kBaseTime = 1'600'000'000;

class QuietProxy : public AppkitProxy {
 public:
  int Alert(const AlertRequest&) override { return 0; }
  int AskReplace(const ReplaceRequest&) override { return kReplaceResultSkip; }
  bool ShowPreview(PreviewEditor&) override { return true; }
};

class FilterServices : public RunServices, public ItemFilter {
 public:
  FilterServices() { filter = this; }
  void SessionStarts(RunState&, const PlistDict& session) override { filters.SessionStarts(session); }
  bool IsToBeExcluded(RunState&, const std::string& path) override { return filters.IsToBeExcluded(path); }
  bool IsToBeFiltered(RunState&, const std::string& path, const ItemAttributes& attributes) override {
    return filters.IsToBeFiltered(path, attributes);
  }
  SessionFilters filters;
};

std::string FolderName(int i) {
  char name[16];
  std::snprintf(name, sizeof name, "d%05d", i);
  return name;
}

// N small files in folders of 100, with sizes and dates spread so that every criterion has
// something to read.
void MakeTree(const std::string& root, int items) {
  std::filesystem::create_directories(root);
  for (int i = 0; i < items; ++i) {
    const std::string folder = root + "/" + FolderName(i / kItemsPerFolder);
    if (i % kItemsPerFolder == 0) ::mkdir(folder.c_str(), 0755);
    char name[32];
    std::snprintf(name, sizeof name, "/f%07d.dat", i);
    const std::string path = folder + name;
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd < 0) {
      std::perror(path.c_str());
      std::exit(1);
    }
    if (::ftruncate(fd, i % 4096) != 0) std::perror("ftruncate");
    const std::int64_t when = kBaseTime - static_cast<std::int64_t>(i % 1000) * 86'400;
    const timespec times[2] = {{when, 0}, {when, 0}};
    ::futimens(fd, times);
    ::close(fd);
  }
}

PlistDict Row(std::initializer_list<PlistDict::Item> criteria) {
  PlistDict row = DefaultFilterRow();
  for (const auto& [key, value] : criteria) row.Set(key, value);
  return row;
}

// Ten rows that each fail on their last criterion for every generated item, so every item
// is tested against every criterion of every row.
PlistArray TenRows() {
  return PlistArray{
      Row({{"filterFileNameOn", 1}, {"filterFileNameField", "zzz"}}),
      Row({{"filterFileNameOn", 1}, {"filterFileNamePop", 2}, {"filterFileNameField", ".DAT"}, {"filterKindOn", 1},
           {"filterKindPop", 1}}),
      Row({{"filterModificationDateOn", 1}, {"filterModificationDatePop", 2}, {"filterModificationDateYear", 2030}}),
      Row({{"filterModificationDateOn", 1}, {"filterModificationDatePop", 0}, {"filterModificationDateYear", 2000}}),
      Row({{"filterFileSizeOn", 1}, {"filterFileSizePop", 2}, {"filterFileSizeField", 1}, {"filterFileSizeBytesPop", 2}}),
      Row({{"filterOwnerOn", 1}, {"filterOwnerPop", 0}, {"filterOwnerField", "no-such-owner"}}),
      Row({{"filterGroupOn", 1}, {"filterGroupPop", 3}, {"filterGroupField", std::to_string(::getgid())}}),
      Row({{"filterFileNameOn", 1}, {"filterFileNamePop", 5}, {"filterFileNameField", "0"}}),
      Row({{"filterKindOn", 1}, {"filterKindPop", 3}}),
      Row({{"filterTypeOn", 1}, {"filterTypeField", "TEXT"}}),
  };
}

PlistArray ThousandExclusions(const std::string& root) {
  PlistArray rows;
  for (int i = 0; i < 1000; ++i) {
    rows.emplace_back(PlistDict{{"onOff", 1}, {"itemToExclude", root + "/" + FolderName(i) + "/Absent-" + std::to_string(i)}});
  }
  return rows;
}

struct Timing {
  double wall = 0;
  double cpu = 0;  // the process's processor time: less disturbed by other work on the machine
};

double CpuNow() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// One dry-run scan; `scanned` gets the number of items it looked at.
Timing ScanSeconds(PlistDict& document, const PlistDict& preferences, FileSystem& fs, bool withOptions,
                   std::int64_t& scanned) {
  PlistDict& session = *GetSessionDict(document, 0);
  session.GetDict("filterDict")->Set("filterOn", withOptions ? 1 : 0);
  session.GetDict("excludeDict")->Set("excludeOn", withOptions ? 1 : 0);
  QuietProxy proxy;
  FilterServices services;
  RunDriver driver(document, preferences, fs, proxy, services);
  driver.SetDryRun(true);
  const auto start = std::chrono::steady_clock::now();
  const double cpuStart = CpuNow();
  driver.ExecuteSyncBackup(0, kExecutedByCommandLine);
  const Timing timing{std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
                      CpuNow() - cpuStart};
  scanned = driver.state().gGlobalItemsScanned;
  if (withOptions && services.filters.CountFilterValid() != 10) {
    std::fprintf(stderr, "the filter rows did not all become active\n");
    std::exit(1);
  }
  return timing;
}

// The least and the median of each measure: the least is the run the rest of the machine
// disturbed least.
void Report(const char* what, const std::vector<Timing>& timings, Timing& least) {
  std::vector<double> wall, cpu;
  for (const Timing& t : timings) {
    wall.push_back(t.wall);
    cpu.push_back(t.cpu);
  }
  std::sort(wall.begin(), wall.end());
  std::sort(cpu.begin(), cpu.end());
  least = Timing{wall.front(), cpu.front()};
  std::printf("%-40s wall least %.3f s, median %.3f s; processor least %.3f s\n", what, wall.front(),
              wall[wall.size() / 2], cpu.front());
}

int Main(int argc, char** argv) {
  int items = 100'000;
  int repeat = 5;
  std::string work;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--items") items = std::atoi(argv[i + 1]);
    else if (option == "--repeat") repeat = std::max(1, std::atoi(argv[i + 1]));
    else if (option == "--work") work = argv[i + 1];
  }
  const bool ownWork = work.empty();
  if (ownWork) {
    char pattern[] = "/tmp/mg-filter-bench-XXXXXX";
    if (::mkdtemp(pattern) == nullptr) return 1;
    work = pattern;
  }
  const std::string source = work + "/A", dest = work + "/B";
  if (!std::filesystem::exists(source)) MakeTree(source, items);
  std::filesystem::create_directories(dest);

  PlistDict document{{"sessionsArray", PlistArray()}, {"fileVersion", kFileVersion}, {"sessionIndex", 0}};
  AddSession(2, "bench", document);
  PlistDict& session = *GetSessionDict(document, 0);
  session.GetDict("consoleDict")->Set("topFolder", source);
  session.GetDict("consoleDict")->Set("bottomFolder", dest);
  session.GetDict("settingsDict")->Set("settSkipCheckPermissions", 1);
  session.GetDict("filterDict")->Set("filterArray", TenRows());
  session.GetDict("excludeDict")->Set("excludeArray", ThousandExclusions(source));
  PlistDict preferences = GetDefaultPreferencesDict(work + "/logs", false);
  preferences.Set("prefLogKind", 0);
  LinuxFileSystem fs;

  std::int64_t plainItems = 0, filteredItems = 0;
  ScanSeconds(document, preferences, fs, false, plainItems);  // warms the page cache
  std::vector<Timing> plain, filtered;
  for (int i = 0; i < repeat; ++i) {
    plain.push_back(ScanSeconds(document, preferences, fs, false, plainItems));
    filtered.push_back(ScanSeconds(document, preferences, fs, true, filteredItems));
  }
  // The rows must leave every item in, or the filtered scan would be doing less work.
  if (plainItems != filteredItems || plainItems < items) {
    std::fprintf(stderr, "scanned %lld items without filters but %lld with them\n", static_cast<long long>(plainItems),
                 static_cast<long long>(filteredItems));
    return 1;
  }
  std::printf("items scanned %lld, %d scans each\n", static_cast<long long>(plainItems), repeat);
  Timing a, b;
  Report("without filters", plain, a);
  Report("with 10 filter rows and 1000 exclusions", filtered, b);
  std::printf("ratio (least wall) %.3f, ratio (least processor) %.3f; goal <= 1.2\n", b.wall / a.wall, b.cpu / a.cpu);
  if (ownWork) std::filesystem::remove_all(work);
  return 0;
}

}  // namespace
}  // namespace marigold

int main(int argc, char** argv) { return marigold::Main(argc, argv); }
