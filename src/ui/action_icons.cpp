#include "ui/action_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <string>

#include "engine/copy_mode.h"

namespace marigold {
namespace {

enum class Shape { Arrow, Cross, Bin, Dot, Equal, Attributes, Clock };

struct Picture {
  Shape shape;
  QColor colour;
};

Picture PictureOf(std::string_view name) {
  const std::string n(name);
  if (n.find("Violet") != std::string::npos) return {Shape::Arrow, QColor(0x7e, 0x57, 0xc2)};
  if (n.find("Orange") != std::string::npos) return {Shape::Arrow, QColor(0xef, 0x6c, 0x00)};
  if (n.find("Timer") != std::string::npos) return {Shape::Clock, QColor(0x1e, 0x88, 0xe5)};
  if (n.find("Trash") != std::string::npos) return {Shape::Bin, QColor(0xc6, 0x28, 0x28)};
  if (n.find("Delete") != std::string::npos) return {Shape::Cross, QColor(0xc6, 0x28, 0x28)};
  if (n.find("Access") != std::string::npos) return {Shape::Attributes, QColor(0x00, 0x89, 0x7b)};
  if (n.find("Nothing") != std::string::npos) return {Shape::Equal, QColor(0x75, 0x75, 0x75)};
  return {Shape::Dot, QColor(0x9e, 0x9e, 0x9e)};
}

QPixmap Draw(const Picture& picture, bool towardsA, bool faded, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  QColor colour = picture.colour;
  if (faded) colour.setAlpha(90);
  QPen pen(colour, size / 8.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  painter.setPen(pen);
  const double s = size;
  if (towardsA) painter.translate(s, 0), painter.scale(-1, 1);
  switch (picture.shape) {
    case Shape::Arrow:
    case Shape::Attributes: {
      if (picture.shape == Shape::Attributes) pen.setStyle(Qt::DotLine), painter.setPen(pen);
      painter.drawLine(QPointF(s * 0.15, s * 0.5), QPointF(s * 0.8, s * 0.5));
      pen.setStyle(Qt::SolidLine);
      painter.setPen(pen);
      QPainterPath head;
      head.moveTo(s * 0.55, s * 0.25);
      head.lineTo(s * 0.85, s * 0.5);
      head.lineTo(s * 0.55, s * 0.75);
      painter.drawPath(head);
      break;
    }
    case Shape::Cross:
      painter.drawLine(QPointF(s * 0.25, s * 0.25), QPointF(s * 0.75, s * 0.75));
      painter.drawLine(QPointF(s * 0.75, s * 0.25), QPointF(s * 0.25, s * 0.75));
      break;
    case Shape::Bin: {
      // A bin with its lid: the item goes where it can still be taken back from.
      painter.drawLine(QPointF(s * 0.2, s * 0.27), QPointF(s * 0.8, s * 0.27));
      painter.drawLine(QPointF(s * 0.42, s * 0.17), QPointF(s * 0.58, s * 0.17));
      QPainterPath body;
      body.moveTo(s * 0.28, s * 0.35);
      body.lineTo(s * 0.33, s * 0.85);
      body.lineTo(s * 0.67, s * 0.85);
      body.lineTo(s * 0.72, s * 0.35);
      painter.drawPath(body);
      break;
    }
    case Shape::Clock:
      painter.drawEllipse(QPointF(s * 0.5, s * 0.5), s * 0.36, s * 0.36);
      painter.drawLine(QPointF(s * 0.5, s * 0.5), QPointF(s * 0.5, s * 0.28));
      painter.drawLine(QPointF(s * 0.5, s * 0.5), QPointF(s * 0.66, s * 0.58));
      break;
    case Shape::Equal:
      painter.drawLine(QPointF(s * 0.25, s * 0.4), QPointF(s * 0.75, s * 0.4));
      painter.drawLine(QPointF(s * 0.25, s * 0.6), QPointF(s * 0.75, s * 0.6));
      break;
    case Shape::Dot:
      painter.setBrush(colour);
      painter.drawEllipse(QPointF(s * 0.5, s * 0.5), s * 0.12, s * 0.12);
      break;
  }
  return pixmap;
}

QIcon MakeIcon(std::string_view name, bool towardsA, bool faded) {
  QIcon icon;
  for (int size : {16, 24, 32, 48}) icon.addPixmap(Draw(PictureOf(name), towardsA, faded, size));
  return icon;
}

}  // namespace

QIcon ActionIcon(std::string_view imageName, bool towardsA) { return MakeIcon(imageName, towardsA, false); }

QIcon CopyModeIcon(int copyMode, std::string_view imageName) {
  const int mode = copyMode < 0 ? -copyMode : copyMode;
  // Odd modes act from side B; deletions of side A point at A.
  const bool towardsA = mode == kCopyModeDeleteInA ? true : (mode >= 2 && mode % 2 == 1 && mode != kCopyModeDeleteInB);
  return MakeIcon(imageName, towardsA, copyMode < 1);
}

QIcon TimerIcon(bool on) { return MakeIcon(on ? "icnOptOn_Timer_1" : "icnOptOn_Timer_0", false, !on); }

}  // namespace marigold
