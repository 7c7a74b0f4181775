#include "ui/replace_dialog.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "ui/action_icons.h"
#include "ui/alert_dialog.h"
#include "ui/desktop_services.h"
#include "util/strings_table.h"

namespace marigold {

ReplaceDialog::ReplaceDialog(const ReplaceRequest& request, QWidget* parent) : QDialog(parent), mRequest(request) {
  const ReplacePromptText prompt = BuildReplacePrompt(mRequest, false);
  setObjectName(QStringLiteral("ReplaceDialog"));
  auto* layout = new QVBoxLayout(this);
  mText = new QLabel(this);
  mText->setWordWrap(true);
  layout->addWidget(mText);

  auto* sides = new QHBoxLayout;
  sides->addWidget(SideBox(mRequest.source, mRequest.sideA, prompt.showsSource), 1);
  mDirection = new QToolButton(this);
  mDirection->setObjectName(QStringLiteral("direction"));
  mDirection->setIconSize(QSize(32, 32));
  mDirection->setAutoRaise(true);
  mDirection->setEnabled(prompt.showsDirectionButton);
  connect(mDirection, &QToolButton::clicked, this, [this] {
    // Only a conflict that can go either way acts on the button; the others keep their picture.
    if (!BuildReplacePrompt(mRequest, mDirectionChanged).canChangeDirection) return;
    mDirectionChanged = !mDirectionChanged;
    ShowTexts();
  });
  sides->addWidget(mDirection);
  sides->addWidget(SideBox(mRequest.dest, mRequest.sideB, prompt.showsDest), 1);
  layout->addLayout(sides);

  auto* buttons = new QHBoxLayout;
  auto* stop = new QPushButton(ToQ(GLS("Stop")), this);
  stop->setObjectName(QStringLiteral("stop"));
  stop->setAutoDefault(false);
  mSkip = new QPushButton(this);
  mSkip->setObjectName(QStringLiteral("skip"));
  mSkip->setAutoDefault(false);
  mReplace = new QPushButton(this);
  mReplace->setObjectName(QStringLiteral("replace"));
  mReplace->setDefault(true);
  buttons->addWidget(stop);
  buttons->addStretch(1);
  buttons->addWidget(mSkip);
  buttons->addWidget(mReplace);
  layout->addLayout(buttons);
  auto finish = [this](int result) {
    mResult = result;
    accept();
  };
  connect(stop, &QPushButton::clicked, this, [finish] { finish(kReplaceResultStop); });
  connect(mSkip, &QPushButton::clicked, this, [finish] { finish(kReplaceResultSkip); });
  connect(mReplace, &QPushButton::clicked, this, [finish] { finish(kReplaceResultReplace); });
  ShowTexts();
  setMinimumWidth(640);
  mReplace->setFocus();
}

void ReplaceDialog::ShowTexts() {
  const ReplacePromptText prompt = BuildReplacePrompt(mRequest, mDirectionChanged);
  setWindowTitle(ToQ(prompt.title));
  mText->setText(DisplayText(prompt.text));
  const bool towardsA = mRequest.copyMode % 2 == 1 ? !mDirectionChanged : mDirectionChanged;
  mDirection->setIcon(ActionIcon(prompt.directionImage, towardsA));
  mDirection->setToolTip(ToQ(prompt.directionTooltip));
  mReplace->setText(ToQ(prompt.replaceTitle));
  mReplace->setToolTip(ToQ(prompt.replaceTooltip));
  mSkip->setText(ToQ(prompt.skipTitle));
  mSkip->setToolTip(ToQ(prompt.skipTooltip));
}

QWidget* ReplaceDialog::SideBox(const std::string& path, const ReplaceSide& side, bool shown) {
  auto* box = new QGroupBox(this);
  auto* layout = new QVBoxLayout(box);
  const QString qpath = ToQ(path);
  auto* icon = new QLabel(box);
  const QFileIconProvider icons;
  const QIcon kindIcon = side.kind == ItemKind::kFolder ? icons.icon(QFileIconProvider::Folder)
                                                        : icons.icon(QFileIconProvider::File);
  icon->setPixmap(kindIcon.pixmap(48, 48));
  icon->setEnabled(side.exists);
  icon->setAlignment(Qt::AlignCenter);
  layout->addWidget(icon);
  auto* name = new QLabel(qpath, box);
  name->setWordWrap(true);
  name->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(name);
  auto* date = new QLabel(ToQ(ModificationDateLine(side.exists ? side.modified : std::nullopt)), box);
  date->setWordWrap(true);
  layout->addWidget(date);
  if (side.exists && side.kind != ItemKind::kFolder)
    layout->addWidget(new QLabel(QLocale().formattedDataSize(static_cast<qint64>(side.size)), box));
  auto* buttons = new QHBoxLayout;
  auto* open = new QPushButton(ToQ(GLS("Open")), box);
  auto* reveal = new QPushButton(ToQ(GLS("Reveal")), box);
  open->setAutoDefault(false);
  reveal->setAutoDefault(false);
  open->setEnabled(shown && side.exists);
  reveal->setEnabled(shown && side.exists);
  connect(open, &QPushButton::clicked, this, [qpath] { OpenItem(qpath); });
  connect(reveal, &QPushButton::clicked, this, [qpath] { RevealInFileManager(qpath); });
  buttons->addWidget(open);
  buttons->addWidget(reveal);
  layout->addLayout(buttons);
  return box;
}

int ReplaceDialog::Ask() {
  mResult = kReplaceResultSkip;
  // Closing the window leaves the items as they are.
  if (exec() != QDialog::Accepted) return kReplaceResultSkip;
  return mDirectionChanged ? -mResult : mResult;
}

}  // namespace marigold
