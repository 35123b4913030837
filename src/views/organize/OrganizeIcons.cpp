#include "OrganizeIcons.h"

#include <array>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

constexpr int Size = 16;

QPixmap canvas()
{
    QPixmap pixmap(Size, Size);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

QIcon folder(const QColor &body, const QColor &edge)
{
    QPixmap pixmap = canvas();
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(body.darker(115));
    painter.drawRoundedRect(QRectF(1.5, 3.5, 6, 3), 1, 1);
    painter.setBrush(body);
    painter.drawRoundedRect(QRectF(1.5, 5.5, 13, 8.5), 1.2, 1.2);
    return QIcon(pixmap);
}

QIcon person(const QColor &colour, bool placed)
{
    QPixmap pixmap = canvas();
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor fill = placed ? colour : colour.lighter(150);
    const QColor edge = placed ? colour.darker(150) : QColor(0x80, 0x80, 0x80);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(fill);
    QPainterPath body;
    body.moveTo(2.5, 15);
    body.cubicTo(2.5, 9, 13.5, 9, 13.5, 15);
    body.closeSubpath();
    painter.drawPath(body);
    painter.setBrush(QColor(0xF6, 0xD1, 0xA8));
    painter.drawEllipse(QRectF(5, 1.5, 6, 6.5));
    if (!placed) {
        // Unplaced: a small grey circle with a bar, "in no group".
        painter.setPen(QPen(QColor(0x60, 0x60, 0x60), 1.2));
        painter.setBrush(Qt::white);
        painter.drawEllipse(QRectF(9.5, 9.5, 6, 6));
        painter.drawLine(QPointF(10.8, 12.5), QPointF(14.2, 12.5));
    }
    return QIcon(pixmap);
}

} // namespace

QIcon OrganizeIcons::root()
{
    static const QIcon icon = folder(QColor(0x6A, 0x9F, 0xD8), QColor(0x2E, 0x5C, 0x8F));
    return icon;
}

QIcon OrganizeIcons::group()
{
    static const QIcon icon = folder(QColor(0xF2, 0xC9, 0x4C), QColor(0xA0, 0x7A, 0x10));
    return icon;
}

QIcon OrganizeIcons::member(int iconIndex)
{
    static const std::array<QIcon, 4> icons = {
        person(QColor(0x3C, 0x78, 0xD8), true),
        person(QColor(0xD8, 0x4C, 0x6E), true),
        person(QColor(0x3C, 0x78, 0xD8), false),
        person(QColor(0xD8, 0x4C, 0x6E), false),
    };
    if (iconIndex < 0 || iconIndex >= int(icons.size()))
        return {};
    return icons[size_t(iconIndex)];
}
