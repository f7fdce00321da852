#include "headunit/front/launcher.h"

#include "headunit/front/statusbar.h"

#include "common/mcumanager.h"
#include "common/translator.h"
#include "platform/common/widgets/palette.h"

#include <QPainter>
#include <QPainterPath>

#include <iterator>

namespace headunit {

namespace {

constexpr int notStartedText = 1270, tryAgainText = 1271;
constexpr int tileSize = 216, tileGap = 24, tilesInRow = 4, maxRows = 2;

/// Seven sliders of an equalizer.
void drawEqualizer(QPainter& painter, const QRectF& field)
{
    constexpr qreal knobs[] = {0.62, 0.34, 0.20, 0.44, 0.66, 0.48, 0.28}; // 0 top ... 1 bottom
    constexpr int count = int(std::size(knobs));
    const qreal pitch = field.width() / count;
    for (int i = 0; i < count; ++i) {
        const qreal x = field.left() + (i + 0.5) * pitch;
        const qreal y = field.top() + knobs[i] * field.height();
        painter.setPen(QPen(QColor(cm::palette::lineStrong), 5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(x, field.top()), QPointF(x, y));
        painter.setPen(QPen(QColor(cm::palette::accent), 5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(x, y), QPointF(x, field.bottom()));
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(cm::palette::ink));
        painter.drawEllipse(QPointF(x, y), 6.5, 6.5);
    }
}

/// What every tile has: its ground, and a frame while the keyboard's focus is on it.
void drawTile(QPainter& painter, const QAbstractButton& tile)
{
    const QRectF body = QRectF(tile.rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    QLinearGradient ground(body.topLeft(), body.bottomLeft());
    ground.setColorAt(0, QColor(tile.isDown() ? cm::palette::accentDeep : cm::palette::panel));
    ground.setColorAt(1, QColor(tile.isDown() ? cm::palette::accentDeep : cm::palette::page).darker(110));
    painter.setPen(QPen(QColor(tile.isDown() ? cm::palette::accent : cm::palette::lineStrong), 1.5));
    painter.setBrush(ground);
    painter.drawRoundedRect(body, 22, 22);
    if (tile.hasFocus() && tile.window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
        painter.setPen(QPen(QColor(cm::palette::accentBright), 2.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(body.adjusted(4, 4, -4, -4), 18, 18);
    }
}

} // namespace

LauncherTile::LauncherTile(int windowId, const QString& name, Picture picture, QWidget* parent)
    : QAbstractButton(parent)
    , m_picture(picture)
{
    setObjectName(nameOf(windowId));
    setText(name);
    setFixedSize(tileSize, tileSize);
}

QString LauncherTile::nameOf(int windowId)
{
    return QStringLiteral("tile_%1").arg(windowId);
}

void LauncherTile::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    drawTile(painter, *this);

    const QRectF picture(48, 40, width() - 96, 92);
    QFont font = this->font();
    if (m_picture == Picture::Equalizer) {
        drawEqualizer(painter, picture);
    } else {
        font.setPixelSize(84);
        painter.setFont(font);
        painter.setPen(QColor(cm::palette::accent));
        painter.drawText(picture, Qt::AlignCenter, text().left(1).toUpper());
    }

    font.setPixelSize(30);
    painter.setFont(font);
    painter.setPen(QColor(cm::palette::ink));
    const QRect label(12, height() - 70, width() - 24, 52);
    painter.drawText(label, Qt::AlignCenter,
                     painter.fontMetrics().elidedText(text(), Qt::ElideRight, label.width()));
}

RetryTile::RetryTile(const QString& what, const QString& name, QWidget* parent)
    : QAbstractButton(parent)
{
    setObjectName(nameOf(what));
    setText(name);
    setFixedSize(tileSize, tileSize);
}

QString RetryTile::nameOf(const QString& what)
{
    return QLatin1String("retry_") + what;
}

void RetryTile::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawTile(painter, *this);

    QFont font = this->font();
    font.setPixelSize(24);
    painter.setFont(font);
    painter.setPen(QColor(cm::palette::inkDim));
    const int margin = 12, inner = width() - 2 * margin;
    painter.drawText(QRect(margin, 24, inner, 40), Qt::AlignCenter,
                     painter.fontMetrics().elidedText(text(), Qt::ElideMiddle, inner));
    font.setPixelSize(18);
    painter.setFont(font);
    painter.setPen(QColor(cm::palette::ink));
    painter.drawText(QRect(margin, 72, inner, 60), Qt::AlignCenter | Qt::TextWordWrap,
                     Translator::translate(notStartedText));
    painter.setPen(QColor(cm::palette::accent));
    painter.drawText(QRect(margin, 140, inner, 60), Qt::AlignCenter | Qt::TextWordWrap,
                     Translator::translate(tryAgainText));
}

Launcher::Launcher(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("launcher"));
}

void Launcher::add(QAbstractButton* tile)
{
    if (m_tiles.size() >= tilesInRow * maxRows)
        qWarning("the launcher is full; the tile \"%s\" lies off the screen", qPrintable(tile->text()));
    connect(tile, &QAbstractButton::clicked, this, [] { McuManager::instance()->triggerBeep(0); });
    tile->setAccessibleName(tile->text());
    m_tiles.append(tile);
    layOut();
}

void Launcher::addTile(int windowId, const QString& name, LauncherTile::Picture picture)
{
    auto* tile = new LauncherTile(windowId, name, picture, this);
    add(tile);
    connect(tile, &QAbstractButton::clicked, this, [this, windowId] { emit chosen(windowId); });
}

void Launcher::setTileName(int windowId, const QString& name)
{
    setName(LauncherTile::nameOf(windowId), name);
}

void Launcher::addRetryTile(const QString& what, const QString& name)
{
    auto* tile = new RetryTile(what, name, this);
    add(tile);
    connect(tile, &QAbstractButton::clicked, this, [this, tile, what] {
        m_tiles.removeOne(tile);
        tile->hide();
        tile->deleteLater();
        layOut();
        emit tryAgainChosen(what);
    });
}

void Launcher::setRetryName(const QString& what, const QString& name)
{
    setName(RetryTile::nameOf(what), name);
}

void Launcher::setName(const QString& objectName, const QString& name)
{
    for (QAbstractButton* tile : std::as_const(m_tiles)) {
        if (tile->objectName() != objectName)
            continue;
        tile->setText(name);
        tile->setAccessibleName(name);
        tile->update();
    }
}

void Launcher::layOut()
{
    const int rows = (m_tiles.size() + tilesInRow - 1) / tilesInRow;
    const int gridHeight = rows * tileSize + (rows - 1) * tileGap;
    const int top = StatusBar::barHeight + qMax(16, (height() - StatusBar::barHeight - gridHeight) / 2);
    for (int i = 0; i < m_tiles.size(); ++i) {
        const int row = i / tilesInRow;
        const int inRow = qMin(tilesInRow, m_tiles.size() - row * tilesInRow);
        const int left = (width() - inRow * tileSize - (inRow - 1) * tileGap) / 2;
        m_tiles[i]->move(left + (i % tilesInRow) * (tileSize + tileGap), top + row * (tileSize + tileGap));
        m_tiles[i]->show();
    }
}

void Launcher::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // A horizon: the night behind the windscreen, the dashboard's edge, a faint light along it.
    const qreal edge = height() * 0.80;
    QLinearGradient night(0, 0, 0, edge);
    night.setColorAt(0, QColor(cm::palette::well));
    night.setColorAt(1, QColor(cm::palette::accentDeep).darker(230));
    painter.fillRect(rect(), night);

    QPainterPath dashboard(QPointF(0, edge + 44));
    dashboard.quadTo(QPointF(width() / 2.0, edge - 36), QPointF(width(), edge + 44));
    dashboard.lineTo(width(), height());
    dashboard.lineTo(0, height());
    dashboard.closeSubpath();
    painter.fillPath(dashboard, QColor(cm::palette::well));

    QLinearGradient light(0, 0, width(), 0);
    light.setColorAt(0, Qt::transparent);
    light.setColorAt(0.5, QColor(cm::palette::accent));
    light.setColorAt(1, Qt::transparent);
    QPainterPath rim(QPointF(0, edge + 44));
    rim.quadTo(QPointF(width() / 2.0, edge - 36), QPointF(width(), edge + 44));
    painter.strokePath(rim, QPen(QBrush(light), 1.6));
}

} // namespace headunit
