#include "headunit/front/unitwindow.h"

#include "headunit/front/hardkey.h"
#include "headunit/front/screen.h"
#include "headunit/front/volumeknob.h"

#include "platform/common/widgets/palette.h"

#include <QKeyEvent>
#include <QPainter>

namespace headunit {

namespace {

constexpr int sideWidth = 104, edgeHeight = 32;
constexpr int frontWidth = Screen::screenWidth + 2 * sideWidth;

struct FrontKey
{
    KeyEvent::Key key;
    const char* name;
    QRect place;
};

// clang-format off
const FrontKey frontKeys[] = {
    {KeyEvent::Key_Power,    "Power",         {15,                          72, 64, 64}},
    {KeyEvent::Key_Home,     "Home",          {frontWidth - sideWidth + 25, 72, 64, 64}},
    {KeyEvent::Key_Back,     "Back",          {frontWidth - sideWidth + 25, 160, 64, 64}},
    {KeyEvent::Key_PrevPage, "Previous page", {frontWidth - sideWidth + 25, 424, 64, 64}},
    {KeyEvent::Key_NextPage, "Next page",     {frontWidth - sideWidth + 25, 512, 64, 64}},
};

struct KeyboardKey
{
    int keyboard;
    KeyEvent::Key key;
};

const KeyboardKey keyboardKeys[] = {
    {Qt::Key_Escape,     KeyEvent::Key_Back},
    {Qt::Key_Back,       KeyEvent::Key_Back},
    {Qt::Key_Home,       KeyEvent::Key_Home},
    {Qt::Key_PageUp,     KeyEvent::Key_PrevPage},
    {Qt::Key_PageDown,   KeyEvent::Key_NextPage},
    {Qt::Key_VolumeUp,   KeyEvent::Key_VolumeUp},
    {Qt::Key_VolumeDown, KeyEvent::Key_VolumeDown},
    {Qt::Key_VolumeMute, KeyEvent::Key_Mute},
};
// clang-format on

} // namespace

UnitWindow::UnitWindow(const MasterVolume* volume, bool withFront)
{
    setObjectName(QStringLiteral("unit"));
    setWindowTitle(QStringLiteral("Head unit"));
    m_screen = new Screen(volume, this);
    if (withFront)
        buildFront(volume);
    else
        setFixedSize(m_screen->size());
}

void UnitWindow::buildFront(const MasterVolume* volume)
{
    setFixedSize(frontWidth, Screen::screenHeight + 2 * edgeHeight);
    m_screen->move(sideWidth, edgeHeight);
    for (const FrontKey& row : frontKeys) {
        auto* key = new HardKey(row.key, QLatin1String(row.name), this);
        key->setGeometry(row.place);
        connect(key, &HardKey::acted, this, &UnitWindow::hardKey);
        m_keys.append(key);
    }
    m_knob = new VolumeKnob(volume, this);
    m_knob->setGeometry(4, 420, 86, 86);
    connect(m_knob, &VolumeKnob::turned, this, [this](int steps) {
        pressAndRelease(steps > 0 ? KeyEvent::Key_VolumeUp : KeyEvent::Key_VolumeDown, qAbs(steps));
    });
    connect(m_knob, &VolumeKnob::pressed, this, [this] { pressAndRelease(KeyEvent::Key_Mute, 1); });
}

void UnitWindow::setLit(bool lit)
{
    m_screen->setLit(lit);
    if (m_knob)
        m_knob->setLit(lit);
    for (HardKey* key : std::as_const(m_keys))
        key->setLit(lit || key->objectName() == QStringLiteral("hardkey_%1").arg(int(KeyEvent::Key_Power)));
}

void UnitWindow::pressAndRelease(KeyEvent::Key key, int times)
{
    for (int i = 0; i < times; ++i) {
        emit hardKey(key, KeyEvent::Press);
        emit hardKey(key, KeyEvent::Release);
    }
}

bool UnitWindow::passKeyboard(QKeyEvent* event, KeyEvent::Action action)
{
    for (const KeyboardKey& row : keyboardKeys) {
        if (row.keyboard != event->key())
            continue;
        // A held key repeats itself; only the knob's steps are meant to.
        const bool repeats = row.key == KeyEvent::Key_VolumeUp || row.key == KeyEvent::Key_VolumeDown;
        if (!event->isAutoRepeat() || repeats)
            emit hardKey(row.key, action);
        return true;
    }
    return false;
}

void UnitWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    emit closed();
}

void UnitWindow::keyPressEvent(QKeyEvent* event)
{
    if (!passKeyboard(event, KeyEvent::Press))
        QWidget::keyPressEvent(event);
}

void UnitWindow::keyReleaseEvent(QKeyEvent* event)
{
    if (!passKeyboard(event, KeyEvent::Release))
        QWidget::keyReleaseEvent(event);
}

void UnitWindow::paintEvent(QPaintEvent*)
{
    if (!m_knob)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient front(0, 0, 0, height());
    front.setColorAt(0, QColor(cm::palette::lineStrong).darker(150));
    front.setColorAt(0.06, QColor(cm::palette::line).darker(110));
    front.setColorAt(1, QColor(cm::palette::page));
    painter.fillRect(rect(), front);
    // The recess that the glass lies in.
    painter.setPen(QPen(QColor(cm::palette::well), 6));
    painter.setBrush(QColor(cm::palette::well));
    painter.drawRoundedRect(QRectF(m_screen->geometry()).adjusted(-6, -6, 6, 6), 8, 8);
    painter.setPen(QPen(QColor(cm::palette::lineStrong), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(m_screen->geometry()).adjusted(-9.5, -9.5, 9.5, 9.5), 10, 10);
}

} // namespace headunit
