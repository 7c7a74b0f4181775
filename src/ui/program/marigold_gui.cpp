// The desktop program: start-up as the command line does it, then the console window.
#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
#include <QTimer>

#include "app/main_app.h"
#include "ui/alert_dialog.h"
#include "ui/console_window.h"
#include "ui/instance_handover.h"
#include "ui/run_as_root.h"

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
  const bool relaunched = parser.isSet(QStringLiteral("setuidroot")) || parser.isSet(QStringLiteral("setuidme"));
  const QString document = parser.positionalArguments().isEmpty()
                               ? QString()
                               : QFileInfo(parser.positionalArguments().first()).absoluteFilePath();
  // A program already running for this user opens the document (or only comes forward). A
  // relaunch with other rights is the one meant to run, whatever else still does.
  if (!relaunched && HandOverToRunningInstance(document)) return 0;

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
  if (!document.isEmpty()) app.controller().OpenFile(FromQ(document));
  app.controller().FinishLaunching();
  InstanceServer server;
  server.Listen();
  QObject::connect(&server, &InstanceServer::handedOver, &window, [&window](const QString& path) {
    // From the event loop: opening may ask about unsaved changes.
    QTimer::singleShot(0, &window, [&window, path] { window.OpenHandedOver(FromQ(path)); });
  });
  window.show();
  if (parser.isSet(QStringLiteral("setuidroot"))) ReportPrivilegedInstanceStarted();
  if (app.preferences().dict().GetInt("prefSyncAndQuit") != 0) window.PrepareToExecuteSyncAndQuit();
  return application.exec();
}
