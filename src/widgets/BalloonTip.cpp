#include "BalloonTip.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QStyle>

namespace {
constexpr int StemHeight = 14;
constexpr int StemWidth = 14;
constexpr int StemOffset = 24; // distance of the stem from the balloon's near edge
constexpr int Radius = 8;
constexpr int Padding = 10;
constexpr int MaxTextWidth = 360;
} // namespace

BalloonTip::BalloonTip(QWidget *parent)
    : QWidget(parent, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_iconLabel(new QLabel(this))
    , m_titleLabel(new QLabel(this))
    , m_textLabel(new QLabel(this))
{
    setObjectName(QStringLiteral("balloonTip"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    m_iconLabel->setObjectName(QStringLiteral("balloonIcon"));
    m_titleLabel->setObjectName(QStringLiteral("balloonTitle"));
    m_textLabel->setObjectName(QStringLiteral("balloonText"));

    QFont bold = m_titleLabel->font();
    bold.setBold(true);
    m_titleLabel->setFont(bold);
    m_titleLabel->setTextFormat(Qt::PlainText);
    m_textLabel->setTextFormat(Qt::PlainText);
    m_textLabel->setWordWrap(true);
    m_textLabel->setMaximumWidth(MaxTextWidth);

    auto *layout = new QGridLayout(this);
    layout->setHorizontalSpacing(6);
    layout->addWidget(m_iconLabel, 0, 0, Qt::AlignTop);
    layout->addWidget(m_titleLabel, 0, 1);
    layout->addWidget(m_textLabel, 1, 1);
    layout->setColumnStretch(1, 1);

    QPalette pal = palette();
    pal.setColor(QPalette::Window, pal.color(QPalette::ToolTipBase));
    pal.setColor(QPalette::WindowText, pal.color(QPalette::ToolTipText));
    setPalette(pal);

    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &QWidget::hide);
}

void BalloonTip::showAt(QWidget *anchor, const QRect &area, const QIcon &icon, const QString &title,
    const QString &text, int timeoutMs)
{
    m_timer.stop();
    m_anchor = anchor;

    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize);
    m_iconLabel->setPixmap(icon.isNull() ? QPixmap() : icon.pixmap(iconSize, iconSize));
    m_iconLabel->setVisible(!icon.isNull());
    m_titleLabel->setText(title);
    m_titleLabel->setVisible(!title.isEmpty());
    m_textLabel->setText(text);

    QPoint point;
    if (anchor) {
        const QRect target = area.isEmpty() ? anchor->rect() : area;
        point = anchor->mapToGlobal(target.center());
    } else if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        point = screen->availableGeometry().center();
    }
    placeAt(point);
    show();
    raise();
    if (timeoutMs > 0)
        m_timer.start(timeoutMs);
}

QString BalloonTip::title() const
{
    return m_titleLabel->text();
}

QString BalloonTip::text() const
{
    return m_textLabel->text();
}

void BalloonTip::placeAt(const QPoint &globalPoint)
{
    m_tipPoint = globalPoint;
    // Lay out for the stem on top first; the final side depends on the screen room.
    m_stemOnTop = true;
    layout()->setContentsMargins(Padding, Padding + StemHeight, Padding, Padding);
    adjustSize();
    QSize size = sizeHint().expandedTo(QSize(2 * StemOffset + StemWidth, 0));

    QRect available(globalPoint - QPoint(2000, 2000), QSize(4000, 4000));
    if (const QScreen *screen = QGuiApplication::screenAt(globalPoint))
        available = screen->availableGeometry();

    if (globalPoint.y() + size.height() > available.bottom()
        && globalPoint.y() - size.height() >= available.top()) {
        m_stemOnTop = false;
        layout()->setContentsMargins(Padding, Padding, Padding, Padding + StemHeight);
        size = sizeHint().expandedTo(QSize(2 * StemOffset + StemWidth, 0));
    }

    int x = globalPoint.x() - StemOffset - StemWidth / 2;
    x = qBound(available.left(), x, qMax(available.left(), available.right() - size.width()));
    m_stemX
        = qBound(Radius, globalPoint.x() - x - StemWidth / 2, size.width() - Radius - StemWidth);
    const int y = m_stemOnTop ? globalPoint.y() : globalPoint.y() - size.height();
    setGeometry(QRect(QPoint(x, y), size));
    updateMask();
    update();
}

QPainterPath BalloonTip::balloonPath() const
{
    const QRectF body = m_stemOnTop
        ? QRectF(0.5, StemHeight + 0.5, width() - 1, height() - StemHeight - 1)
        : QRectF(0.5, 0.5, width() - 1, height() - StemHeight - 1);
    QPainterPath path;
    path.addRoundedRect(body, Radius, Radius);
    QPolygonF stem;
    if (m_stemOnTop) {
        stem << QPointF(m_stemX, body.top() + 1) << QPointF(m_stemX + StemWidth / 2.0, 0.5)
             << QPointF(m_stemX + StemWidth, body.top() + 1);
    } else {
        stem << QPointF(m_stemX, body.bottom() - 1)
             << QPointF(m_stemX + StemWidth / 2.0, height() - 0.5)
             << QPointF(m_stemX + StemWidth, body.bottom() - 1);
    }
    QPainterPath stemPath;
    stemPath.addPolygon(stem);
    stemPath.closeSubpath();
    return path.united(stemPath);
}

void BalloonTip::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    updateMask();
}

void BalloonTip::updateMask()
{
    // A mask rather than a translucent window: it needs no compositing manager.
    QPainterPath outline = balloonPath();
    QPainterPathStroker stroker;
    stroker.setWidth(2);
    setMask(QRegion(outline.united(stroker.createStroke(outline)).toFillPolygon().toPolygon()));
}

void BalloonTip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::ToolTipText), 1));
    painter.setBrush(palette().color(QPalette::ToolTipBase));
    painter.drawPath(balloonPath());
}

void BalloonTip::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    m_timer.stop();
    hide();
}
