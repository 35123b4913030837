#pragma once

#include <QIcon>
#include <QPainterPath>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QLabel;

// A balloon-shaped tip with an icon, a bold title and a text, whose stem points
// at a widget or at an area inside it (a grid cell). It closes itself after
// its timeout or when clicked. One instance is shared: showing a new tip
// replaces the one on screen.
class BalloonTip : public QWidget
{
    Q_OBJECT

public:
    explicit BalloonTip(QWidget *parent = nullptr);

    // area is in anchor's coordinates; an empty area means the whole anchor.
    void showAt(QWidget *anchor, const QRect &area, const QIcon &icon, const QString &title,
        const QString &text, int timeoutMs);

    QString title() const;
    QString text() const;
    // The global point the stem touches.
    QPoint tipPoint() const { return m_tipPoint; }
    QWidget *anchor() const { return m_anchor; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QPainterPath balloonPath() const;
    void placeAt(const QPoint &globalPoint);
    void updateMask();

    QLabel *m_iconLabel;
    QLabel *m_titleLabel;
    QLabel *m_textLabel;
    QTimer m_timer;
    QPointer<QWidget> m_anchor;
    QPoint m_tipPoint;
    bool m_stemOnTop = true;
    int m_stemX = 0;
};
