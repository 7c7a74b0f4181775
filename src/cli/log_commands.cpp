#include "cli/log_commands.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "app/document_edit.h"
#include "app/preferences.h"
#include "app/preferences_rules.h"
#include "cli/commands.h"
#include "logging/email_account.h"
#include "logging/email_report.h"
#include "logging/log_reading.h"
#include "logging/log_window.h"
#include "platform/linux_file_system.h"
#include "util/strings_table.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

int Fail(const std::string& message, int status) {
  std::fprintf(stderr, "marigold: %s\n", message.c_str());
  return status;
}

// The text with the platform's line ends.
std::string TerminalLines(std::string text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') {
      out += '\n';
      if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

int ShowLog(MainApp& app, const LogCommandArgs& args) {
  LinuxFileSystem fs;
  const std::string folder = app.preferences().dict().GetString("prefPathLogFolder");
  if (args.list) {
    for (const LogFileEntry& entry : ListLogFiles(fs, folder)) {
      const std::optional<std::string> text = ReadLogFileText(fs, entry.path);
      std::printf("%s\t%s %s\n", entry.path.c_str(), GLS("Errors:").c_str(),
                  text ? std::to_string(LogErrorCount(*text)).c_str() : "?");
    }
    return kExitOk;
  }
  std::string path = args.file;
  if (path.empty()) {
    const std::vector<LogFileEntry> logs = ListLogFiles(fs, folder);
    if (logs.empty()) return Fail("no log file in \"" + folder + "\"", kExitFailed);
    path = logs.front().path;
  }
  const std::optional<std::string> text = ReadLogFileText(fs, path);
  if (!text) return Fail(GLS("Can't open this Log file.") + " \"" + path + "\"", kExitBadInput);
  std::cout << (args.errors ? LogErrorLines(*text) : TerminalLines(*text));
  std::cout.flush();
  return std::cout ? kExitOk : kExitFailed;
}

int SavePreferences(MainApp& app, PlistDict prefs) {
  app.preferences().SetDict(std::move(prefs));
  if (!app.preferences().WriteFilePreferences(false)) return Fail("cannot write the preferences", kExitFailed);
  return kExitOk;
}

// Applies every KEY=VALUE to a copy, runs the panel's checks, and writes only when all pass.
int SetPreferences(MainApp& app, const LogCommandArgs& args) {
  PlistDict prefs = app.preferences().dict();
  const PlistDict defaults = GetDefaultPreferencesDict(app.paths().defaultLogFolder, app.identities().isRoot);
  for (const std::string& assignment : args.assignments) {
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos || equals == 0) return Fail("prefs set takes KEY=VALUE, not \"" + assignment + "\"", kExitBadInput);
    const std::string key = assignment.substr(0, equals);
    const PlistValue* model = defaults.Find(key);
    if (model == nullptr) return Fail("no preference is called \"" + key + "\"", kExitBadInput);
    if (key == "prefSendEmailDict") return Fail("the mail account is set with \"marigold prefs mail\"", kExitBadInput);
    std::string why;
    std::optional<PlistValue> value = ParseTypedValue(model->GetType(), assignment.substr(equals + 1), why);
    if (!value) return Fail("\"" + key + "\": " + why, kExitBadInput);
    prefs.Set(key, std::move(*value));
  }
  PreferencesPanelValues panel = PrefSet(prefs);
  PlistDict checked = prefs;
  const PrefGetResult result = PrefGet(panel, checked);
  if (!result.ok) return Fail(result.alertText, kExitBadInput);
  return SavePreferences(app, std::move(prefs));
}

// One line from standard input; on a terminal asked for without echo.
std::string ReadPassword() {
  const bool terminal = ::isatty(STDIN_FILENO) == 1;
  termios saved{};
  if (terminal) {
    std::fprintf(stderr, "%s ", GLS("Password:").c_str());
    ::tcgetattr(STDIN_FILENO, &saved);
    termios quiet = saved;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
  }
  std::string password;
  std::getline(std::cin, password);
  if (terminal) {
    ::tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    std::fprintf(stderr, "\n");
  }
  return password;
}

int SetMailAccount(MainApp& app, const LogCommandArgs& args) {
  PlistDict prefs = app.preferences().dict();
  PlistDict account = ReadSendEmailDict(prefs).value_or(GetSendEmailDefaultDict());
  if (args.test) {
    MailSeams seams;
    std::string error;
    if (!SendTestEmail(account, seams, &error)) return Fail(TerminalLines(error), kExitFailed);
    std::printf("%s\n", GLS("The test message was sent.").c_str());
    return kExitOk;
  }
  const std::pair<const std::string*, const char*> fields[] = {{&args.to, "mSendEmailTo"},
                                                               {&args.from, "mSendEmailFrom"},
                                                               {&args.account, "mSendEmailAccountID"},
                                                               {&args.smtp, "mSendEmailSMTP"},
                                                               {&args.port, "mSendEmailPort"}};
  for (const auto& [value, key] : fields)
    if (!value->empty()) account.Set(key, *value);
  if (!args.tls.empty()) account.Set("mSendEmailUseSSL", std::int64_t{args.tls == "yes" ? 1 : args.tls == "no" ? 0 : -1});
  account.Set("mSendEmailPassword", ReadPassword());
  std::string reason;
  if (!CheckSendEmailDict(account, &reason)) return Fail(reason, kExitBadInput);
  prefs.Set("prefSendEmailDict", SetWellDict(account));
  return SavePreferences(app, std::move(prefs));
}

}  // namespace

void AddLogCommands(CLI::App& app, CLI::App& prefs, LogCommandArgs& args) {
  args.log = app.add_subcommand("log", "Print a saved log (the newest when no FILE is given)");
  args.log->add_option("FILE", args.file, "A log file (text or RTF)");
  CLI::Option* errors = args.log->add_flag("--errors", args.errors, "Only the error lines, under their task");
  CLI::Option* list = args.log->add_flag("--list", args.list, "The log folder's logs, newest first, with their errors");
  list->excludes(errors);

  args.prefsSet = prefs.add_subcommand("set", "Change preferences (KEY=VALUE...), checked as the preferences panel does");
  args.prefsSet->add_option("ASSIGNMENTS", args.assignments, "KEY=VALUE")->required();

  args.prefsMail = prefs.add_subcommand(
      "mail", "Set the account the log is mailed through (the password is read from standard input)");
  args.prefsMail->add_option("--to", args.to, "Recipients, separated by commas or blanks");
  args.prefsMail->add_option("--from", args.from, "The sender's address");
  args.prefsMail->add_option("--account", args.account, "The SMTP user name");
  args.prefsMail->add_option("--smtp", args.smtp, "The SMTP server");
  args.prefsMail->add_option("--port", args.port, "The SMTP port");
  args.prefsMail->add_option("--tls", args.tls, "yes (required), no, or auto (when the server offers it)")
      ->check(CLI::IsMember({"yes", "no", "auto"}));
  CLI::Option* test = args.prefsMail->add_flag("--test", args.test, "Send the test message to the account's recipients");
  for (const char* name : {"--to", "--from", "--account", "--smtp", "--port", "--tls"})
    test->excludes(args.prefsMail->get_option(name));
}

int ExecuteLogCommand(MainApp& app, const LogCommandArgs& args) {
  if (args.log && args.log->parsed()) return ShowLog(app, args);
  if (args.prefsSet && args.prefsSet->parsed()) return SetPreferences(app, args);
  return SetMailAccount(app, args);
}

}  // namespace marigold
