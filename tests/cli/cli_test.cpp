#include <gtest/gtest.h>

#include <filesystem>

#include "model/document_model.h"
#include "support/cli_runner.h"
#include "platform/plist_files.h"
#include "util/plist_io.h"
#include "util/well_scramble.h"
#include "build_paths.h"

namespace marigold {
namespace {

using cli_testing::CliHome;
using cli_testing::CliResult;
using cli_testing::ReadFileText;
using cli_testing::WriteFileText;

std::string Fixture(const std::string& name) { return std::string(MARIGOLD_FIXTURES) + "/documents/" + name; }

PlistDict ParseDict(const std::string& text) {
  auto value = ParsePlist(text);
  EXPECT_TRUE(value && value->IsDict()) << text.substr(0, 200);
  return value && value->AsDict() ? *value->AsDict() : PlistDict();
}

TEST(DocCommands, NewThenShowRoundTripsAndNewNeverReplacesUnasked) {
  CliHome h;
  std::string file = h.Path("work.mgy");
  CliResult made = h.Run({"doc", "new", file});
  ASSERT_EQ(made.status, 0) << made.err;
  auto written = ReadPlistDictFile(file);
  ASSERT_TRUE(written);
  EXPECT_EQ(written->GetInt("fileVersion"), 420);
  EXPECT_EQ(SessionCount(*written), 2);
  CliResult shown = h.Run({"doc", "show", file});
  ASSERT_EQ(shown.status, 0) << shown.err;
  EXPECT_EQ(ParseDict(shown.out), *written);

  WriteFileText(file, "precious");
  CliResult refused = h.Run({"doc", "new", file});
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.err.find(file), std::string::npos);
  EXPECT_EQ(ReadFileText(file), "precious");
  EXPECT_EQ(h.Run({"doc", "new", "--force", file}).status, 0);
  EXPECT_EQ(SessionCount(ReadPlistDictFile(file).value_or(PlistDict())), 2);
}

TEST(DocCommands, ShowRefusesNewerAndUnreadableDocumentsNamingFileAndReason) {
  CliHome h;
  CliResult newer = h.Run({"doc", "show", Fixture("v421-xml.mgy")});
  EXPECT_EQ(newer.status, 2);
  EXPECT_EQ(newer.out, "");
  EXPECT_NE(newer.err.find("Can't open the file\n\"" + Fixture("v421-xml.mgy") +
                           "\"\nbecause it has been created by a higher version."),
            std::string::npos)
      << newer.err;

  struct Case { std::string name, content, reason; };
  for (const Case& c : std::vector<Case>{
           {"garbage.mgy", "this is no property list\n", ""},
           {"array.mgy", ToXmlPlist(PlistValue(PlistArray{PlistValue(1)})), ""},
           {"noversion.mgy", ToXmlPlist(PlistValue(PlistDict{{"sessionsArray", PlistArray{}}})), "fileVersion"},
           {"absent.mgy", "", "No such file"},
           {"", "", "folder"}}) {
    SCOPED_TRACE(c.name);
    std::string file = c.name.empty() ? h.root() : h.Path(c.name);
    if (!c.name.empty() && c.name != "absent.mgy") WriteFileText(file, c.content);
    CliResult shown = h.Run({"doc", "show", file});
    EXPECT_EQ(shown.status, 2);
    EXPECT_EQ(shown.out, "");
    EXPECT_NE(shown.err.find("\"" + file + "\": "), std::string::npos) << shown.err;
    EXPECT_NE(shown.err.find(c.reason), std::string::npos) << shown.err;
    EXPECT_GT(shown.err.size(), file.size() + 20) << "a reason follows the name: " << shown.err;
  }
}

TEST(PrefsCommand, ShowsThePreferencesWithTheMailPasswordMasked) {
  CliHome h;
  CliResult fresh = h.Run({"prefs", "show"});
  ASSERT_EQ(fresh.status, 0) << fresh.err;
  PlistDict defaults = ParseDict(fresh.out);
  EXPECT_EQ(defaults.GetInt("prefOnError"), 3);
  EXPECT_EQ(defaults.GetString("prefPathLogFolder"), h.data() + "/Quillon/Marigold 4/Log Files");
  EXPECT_TRUE(ReadPlistDictFile(h.PreferencesFile()));
  EXPECT_FALSE(std::filesystem::exists(h.home() + "/.config")) << "XDG_CONFIG_HOME is honoured";

  PlistDict account{{"mSendEmailTo", "you@x.org"}, {"mSendEmailSMTP", "smtp.x.org"}, {"mSendEmailPassword", "hunter2"}};
  ASSERT_TRUE(WriteXmlPlistFile(SystemFileSystem(), h.PreferencesFile(),
                                PlistDict{{"MGPrivatePreferences",
                                           PlistDict{{"versionPref", 411}, {"prefSendEmailDict", SetWellDict(account)}}}}));
  CliResult shown = h.Run({"prefs", "show"});
  ASSERT_EQ(shown.status, 0) << shown.err;
  EXPECT_EQ(shown.out.find("hunter2"), std::string::npos);
  PlistDict prefs = ParseDict(shown.out);
  const PlistDict* mail = prefs.GetDict("prefSendEmailDict");
  ASSERT_TRUE(mail);
  EXPECT_EQ(mail->GetString("mSendEmailPassword"), "********");
  EXPECT_EQ(mail->GetString("mSendEmailSMTP"), "smtp.x.org");
  // The file keeps the account scrambled, password included.
  auto stored = ReadPlistDictFile(h.PreferencesFile());
  const PlistData* data = stored ? stored->GetDict("MGPrivatePreferences")->GetData("prefSendEmailDict") : nullptr;
  ASSERT_TRUE(data);
  EXPECT_EQ(GetWellDict(*data), account);
}

TEST(ResetOption, GivesDefaultPreferencesAndANewTemplate) {
  CliHome h;
  std::filesystem::create_directories(h.config());
  ASSERT_TRUE(WriteXmlPlistFile(SystemFileSystem(), h.PreferencesFile(),
                                PlistDict{{"MGPrivatePreferences", PlistDict{{"versionPref", 411}, {"prefOnError", 1}}}}));
  PlistDict oneSession = NewTemplate();
  oneSession.GetArray("sessionsArray")->pop_back();
  ASSERT_TRUE(WriteXmlPlistFile(SystemFileSystem(), h.TemplateFile(), oneSession));
  auto templateSessions = [&] { return SessionCount(ReadPlistDictFile(h.TemplateFile()).value_or(PlistDict())); };

  CliResult kept = h.Run({"prefs", "show"});
  EXPECT_EQ(ParseDict(kept.out).GetInt("prefOnError"), 1);
  EXPECT_EQ(templateSessions(), 1) << "an ordinary command leaves the template alone";

  CliResult reset = h.Run({"--reset", "prefs", "show"});
  ASSERT_EQ(reset.status, 0) << reset.err;
  EXPECT_EQ(ParseDict(reset.out).GetInt("prefOnError"), 3);
  EXPECT_EQ(ReadPlistDictFile(h.PreferencesFile())->GetDict("MGPrivatePreferences")->GetInt("prefOnError"), 3);
  EXPECT_EQ(templateSessions(), 2);
}

TEST(StartUp, AFatalStopPrintsItsLinesAndExitsWith2) {
  CliHome h;
  h.SetEnv("HOME", h.Path("nobody-lives-here"));
  CliResult result = h.Run({"prefs", "show"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_NE(result.err.find("Cannot find the folder (Home)/Library.\nCannot run."), std::string::npos) << result.err;
  h.SetEnv("HOME", h.home());
  WriteFileText(h.Path("datafile"), "x");
  h.SetEnv("XDG_DATA_HOME", h.Path("datafile"));
  CliResult blocked = h.Run({"doc", "new", h.Path("x.mgy")});
  EXPECT_EQ(blocked.status, 2);
  EXPECT_NE(blocked.err.find("Cannot create the folder\n\"" + h.Path("datafile") + "/Quillon/Marigold 4\".\nCannot run."),
            std::string::npos)
      << blocked.err;
  EXPECT_FALSE(std::filesystem::exists(h.Path("x.mgy")));
}

TEST(Usage, ParseErrorsExitWith2AndHelpWith0) {
  CliHome h;
  struct Case { std::vector<std::string> args; int status; };
  for (const Case& c : {Case{{"bogus"}, 2}, Case{{"doc"}, 2}, Case{{"doc", "show"}, 2},
                        Case{{"doc", "new", "a", "b"}, 2}, Case{{"--no-such-flag"}, 2}, Case{{"--help"}, 0},
                        Case{{"doc", "--help"}, 0}, Case{{"--version"}, 0}, Case{{"--reset"}, 0}}) {
    EXPECT_EQ(h.Run(c.args).status, c.status) << (c.args.empty() ? "" : c.args[0]) << " " << c.args.size();
  }
}

}  // namespace
}  // namespace marigold
