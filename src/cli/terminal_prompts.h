// The terminal's answers to the questions documents and the application ask. Alerts go to
// standard error; an unattended session (no terminal, or asked not to ask) takes the default
// button and cancels every file panel.
#pragma once

#include <cstdio>
#include <string>

#include "app/app_prompts.h"

namespace marigold {

class TerminalPrompts : public AppPrompts {
 public:
  // `interactive`: questions with more than one answer are asked on the terminal.
  explicit TerminalPrompts(bool interactive, std::FILE* in = stdin, std::FILE* out = stderr);

  int Alert(const AlertRequest& request) override;
  std::optional<std::string> SavePanel(const std::string& suggestedName,
                                       const std::string& extension) override;
  std::optional<std::string> OpenPanel(const std::string& extension) override;

  // How many alerts were shown, so a command can tell a reported failure from a silent one.
  int AlertCount() const { return mAlertCount; }
  // One line typed on the terminal, without its line break; nothing at the end of input.
  std::optional<std::string> ReadLine();

 private:
  bool mInteractive;
  std::FILE* mIn;
  std::FILE* mOut;
  int mAlertCount = 0;
};

// True when both standard input and standard error are terminals.
bool IsInteractiveTerminal();

}  // namespace marigold
