#include "headunit/front/screen.h"

#include "headunit/front/launcher.h"
#include "headunit/front/statusbar.h"

#include "platform/common/widgets/palette.h"

namespace headunit {

namespace {

/// A layer in one colour, whatever style sheets stand above it.
QWidget* plainLayer(QWidget* parent, const char* name, const QColor& color)
{
    auto* layer = new QWidget(parent);
    layer->setObjectName(QLatin1String(name));
    QPalette plain = parent->palette();
    plain.setColor(QPalette::Window, color);
    layer->setPalette(plain);
    layer->setAutoFillBackground(true);
    layer->setGeometry(parent->rect());
    layer->hide();
    return layer;
}

} // namespace

Screen::Screen(const MasterVolume* volume, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("screen"));
    setFixedSize(screenWidth, screenHeight);
    m_launcher = new Launcher(this);
    m_launcher->setGeometry(rect());
    m_area = plainLayer(this, "application_area", cm::palette::page);
    m_statusBar = new StatusBar(volume, this);
    m_statusBar->setGeometry(0, 0, screenWidth, StatusBar::barHeight);
    m_darkness = plainLayer(this, "darkness", Qt::black);
}

bool Screen::isStatusBarShown() const
{
    return !m_statusBar->isHidden();
}

bool Screen::isLit() const
{
    return m_darkness->isHidden();
}

void Screen::showLauncher()
{
    m_area->hide();
    updateLauncher();
    setStatusBarShown(true);
}

void Screen::showApplication()
{
    m_area->show();
    updateLauncher();
}

void Screen::updateLauncher()
{
    // Tab and Enter must not reach a tile that nobody sees.
    m_launcher->setEnabled(m_area->isHidden() && isLit());
}

void Screen::setStatusBarShown(bool shown)
{
    m_statusBar->setVisible(shown);
}

void Screen::setLit(bool lit)
{
    m_darkness->setVisible(!lit);
    updateLauncher();
}

} // namespace headunit
