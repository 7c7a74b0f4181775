// The desktop program: start-up as the command line does it, then the console window.
#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
#include <QTimer>

#include "app/main_app.h"
#include "ui/alert_dialog.h"
#include "ui/console_window.h"

int main(int argc, char** argv) {
  using namespace marigold;
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Marigold"));
  QApplication::setOrganizationName(QStringLiteral("Quillon"));
  QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("marigold")));
  QCommandLineParser parser;
  parser.addHelpOption();
  // Markers of a relaunch into or out of administrator rights; the instance needs nothing else.
  parser.addOption({QStringLiteral("setuidroot"), QStringLiteral("Started with administrator rights")});
  parser.addOption({QStringLiteral("setuidme"), QStringLiteral("Started again with the user's own rights")});
  parser.addPositionalArgument(QStringLiteral("document"), QStringLiteral("A session document (.mgy) to open"));
  parser.process(application);

  ConsoleWindow window;
  MainApp app(window.prompts(), &window);
  LaunchOptions options;
  // The Alt key held at launch resets the preferences and the template.
  options.reset = QApplication::queryKeyboardModifiers() & Qt::AltModifier;
  const StartupResult& started = app.Launch(options);
  if (!started.ok) {
    AlertRequest stop;
    stop.style = AlertRequest::Style::Critical;
    stop.title = started.fatalTitle;
    stop.text = started.fatalMessage;
    stop.buttons = {"OK"};
    ShowAlert(nullptr, stop);
    return 1;
  }
  window.Attach(app);
  if (!parser.positionalArguments().isEmpty())
    app.controller().OpenFile(FromQ(QFileInfo(parser.positionalArguments().first()).absoluteFilePath()));
  app.controller().FinishLaunching();
  window.show();
  if (app.preferences().dict().GetInt("prefSyncAndQuit") != 0) window.PrepareToExecuteSyncAndQuit();
  return application.exec();
}
