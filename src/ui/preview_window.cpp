#include "ui/preview_window.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "ui/alert_dialog.h"
#include "ui/desktop_services.h"
#include "ui/preview_model.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

unsigned PreviewKeys(Qt::KeyboardModifiers modifiers) {
  unsigned keys = 0;
  if (modifiers & Qt::ControlModifier) keys |= kPreviewKeyControl;
  if (modifiers & Qt::AltModifier) keys |= kPreviewKeyOption;
  return keys;
}

}  // namespace

PreviewWindow::PreviewWindow(PreviewEditor& editor, bool expanded, QWidget* parent)
    : QDialog(parent), mEditor(editor), mModel(new PreviewModel(editor, this)) {
  setObjectName(QStringLiteral("PreviewWindow"));
  setWindowTitle(ToQ(editor.windowTitle()));
  auto* layout = new QVBoxLayout(this);
  mOutline = new QTreeView(this);
  mOutline->setModel(mModel);
  mOutline->setUniformRowHeights(true);
  mOutline->setAllColumnsShowFocus(true);
  mOutline->header()->setStretchLastSection(false);
  mOutline->header()->setSectionResizeMode(kPreviewColumnSideA, QHeaderView::Stretch);
  mOutline->header()->setSectionResizeMode(kPreviewColumnAction, QHeaderView::Fixed);
  mOutline->header()->setSectionResizeMode(kPreviewColumnSideB, QHeaderView::Stretch);
  mOutline->header()->resizeSection(kPreviewColumnAction, 64);
  mOutline->header()->setDefaultAlignment(Qt::AlignCenter);
  mOutline->viewport()->installEventFilter(this);
  if (expanded) {
    mOutline->expandAll();
  } else {
    for (int row = 0; row < mModel->rowCount(); ++row) mOutline->expand(mModel->index(row, 0));
  }
  layout->addWidget(mOutline, 1);

  mTallies = new QLabel(this);
  mTallies->setObjectName(QStringLiteral("tallies"));
  mTallies->setWordWrap(true);
  layout->addWidget(mTallies);

  // Next Deletion stands apart on the left; Continue, the default, ends the row.
  auto* buttons = new QHBoxLayout;
  auto* next = new QPushButton(ToQ(GLS("Next Deletion")), this);
  next->setToolTip(ToQ(GLS("Select the next item to be deleted; with Alt, the previous one")));
  auto* stop = new QPushButton(ToQ(GLS("Stop")), this);
  stop->setObjectName(QStringLiteral("stop"));
  auto* go = new QPushButton(ToQ(GLS("Continue")), this);
  go->setObjectName(QStringLiteral("continue"));
  go->setDefault(true);
  connect(next, &QPushButton::clicked, this,
          [this] { SelectNextDeletion(QApplication::keyboardModifiers() & Qt::AltModifier); });
  connect(stop, &QPushButton::clicked, this, &QDialog::reject);
  connect(go, &QPushButton::clicked, this, &QDialog::accept);
  buttons->addWidget(next);
  buttons->addStretch(1);
  buttons->addWidget(stop);
  buttons->addWidget(go);
  layout->addLayout(buttons);
  ShowTallies();
  resize(820, 520);
}

bool PreviewWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == mOutline->viewport() && event->type() == QEvent::MouseButtonRelease) {
    auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() == Qt::LeftButton) {
      const QModelIndex index = mOutline->indexAt(mouse->position().toPoint());
      // A click on the expand arrow only opens the folder.
      if (!index.isValid() || mOutline->visualRect(index).contains(mouse->position().toPoint()))
        ClickRow(index, PreviewKeys(mouse->modifiers()));
    }
  }
  return QDialog::eventFilter(watched, event);
}

void PreviewWindow::ClickRow(const QModelIndex& index, unsigned keys) {
  FileSystemItem* item = PreviewModel::ItemOf(index);
  const PreviewClickResult result = mEditor.ClickTheRow(item, index.isValid() ? index.column() : -1, keys);
  if (result.deselectAll) mOutline->clearSelection();
  if (result.beep) QApplication::beep();
  if (!result.reveal.empty()) RevealInFileManager(ToQ(result.reveal));
  if (result.reload) {
    mModel->RefreshAll();
    ShowTallies();
    Select(item);
  }
}

void PreviewWindow::SelectNextDeletion(bool previous) {
  FileSystemItem* from = PreviewModel::ItemOf(mOutline->currentIndex());
  FileSystemItem* found = mEditor.SearchNextOrPreviousItem(from, previous);
  if (found == nullptr) {
    QApplication::beep();
    return;
  }
  Select(found);
}

void PreviewWindow::Select(FileSystemItem* item) {
  if (item == nullptr) return;
  for (FileSystemItem* up = item->parent(); up != nullptr; up = up->parent()) mOutline->expand(mModel->IndexOf(up));
  const QModelIndex index = mModel->IndexOf(item);
  mOutline->setCurrentIndex(index);
  mOutline->scrollTo(index);
}

void PreviewWindow::ShowTallies() {
  QStringList parts;
  for (const PreviewTally& tally : PreviewTallies(mEditor.tallies()))
    parts << QStringLiteral("%1: <b>%2</b>").arg(ToQ(tally.label).toHtmlEscaped()).arg(tally.value);
  mTallies->setText(parts.join(QStringLiteral(" &nbsp;·&nbsp; ")));
}

}  // namespace marigold
