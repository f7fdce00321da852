#include "headunit/cli/tour.h"

#include "headunit/front/launcher.h"
#include "headunit/front/screen.h"
#include "headunit/shell/audiopages.h"
#include "headunit/shell/shell.h"
#include "headunit/shell/windowhost.h"

#include "platform/common/settings/settingsstore.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPainter>

namespace headunit {

namespace {

constexpr int pageAreaHeight = 510;

/// Lets posted events, deferred deletions and paints happen.
void settle()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

bool isPlain(const QImage& picture)
{
    const QRgb first = picture.pixel(0, 0);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            if (line[x] != first)
                return false;
        }
    }
    return true;
}

void sendMouse(QWidget* target, QEvent::Type type, const QPoint& pos, Qt::MouseButtons held)
{
    QMouseEvent event(type, pos, target->window()->mapFromGlobal(target->mapToGlobal(pos)),
                      target->mapToGlobal(pos), Qt::LeftButton, held, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
}

} // namespace

Tour::Tour(Shell* shell, const QString& folder)
    : m_shell(shell)
    , m_folder(folder)
{
}

bool Tour::run()
{
    if (!QDir().mkpath(m_folder))
        return fail(QStringLiteral("folder %1 can't be made").arg(m_folder));
    mem::SettingsStore* store = mem::SettingsStore::instance();
    const QVariant remembered = store->value(audioPageSetting);
    const bool done = visitLauncher() && visitPages();
    m_shell->leaveApplication();
    if (remembered.isValid())
        store->setValue(audioPageSetting, remembered, true);
    else
        store->remove(audioPageSetting);
    return done;
}

bool Tour::visitLauncher()
{
    m_shell->leaveApplication();
    settle();
    return save(QStringLiteral("launcher"), picture());
}

bool Tour::visitPages()
{
    auto* tile = m_shell->unit()->screen()->launcher()->findChild<QAbstractButton*>(
        QStringLiteral("tile_%1").arg(audioWindowId));
    if (!tile)
        return fail(QStringLiteral("the launcher has no tile of the audio settings"));
    if (!touch(tile))
        return false;
    if (!m_shell->front())
        return fail(QStringLiteral("the audio settings do not open"));
    for (int page = 0; page < audioPageCount; ++page) {
        if (!visitPage(page))
            return false;
    }
    return true;
}

bool Tour::visitPage(int page)
{
    const AudioPage& row = audioPages[page];
    QWidget* root = m_shell->front()->root();
    auto* key = root ? root->findChild<QAbstractButton*>(QLatin1String(row.key)) : nullptr;
    if (!key)
        return fail(QStringLiteral("page %1 has no key \"%2\"").arg(page).arg(QLatin1String(row.key)));
    if (!touch(key))
        return false;
    if (!m_shell->front())
        return fail(QStringLiteral("page %1 left the application").arg(page));
    if (!key->isChecked() || mem::SettingsStore::instance()->value(audioPageSetting) != QVariant(page))
        return fail(QStringLiteral("page %1 does not follow its key").arg(page));
    const QImage shown = picture();
    if (isPlain(shown.copy(0, 0, shown.width(), pageAreaHeight)))
        return fail(QStringLiteral("page %1 shows nothing").arg(page));
    return save(QLatin1String(row.picture), shown);
}

bool Tour::touch(QWidget* target)
{
    // Whatever lies on top gets the touch, as it would under a finger.
    Screen* screen = m_shell->unit()->screen();
    const QPoint pos = target->mapTo(screen, target->rect().center());
    QWidget* hit = screen->childAt(pos);
    if (hit != target)
        return fail(QStringLiteral("\"%1\" can't be touched: %2")
                        .arg(target->objectName(),
                             hit ? QStringLiteral("\"%1\" (%2) lies there")
                                       .arg(hit->objectName(), QLatin1String(hit->metaObject()->className()))
                                 : QStringLiteral("it is not on the screen")));
    const QPoint local = target->rect().center();
    sendMouse(target, QEvent::MouseButtonPress, local, Qt::LeftButton);
    settle();
    sendMouse(target, QEvent::MouseButtonRelease, local, Qt::NoButton);
    settle();
    return true;
}

QImage Tour::picture() const
{
    QImage image(Screen::screenWidth, Screen::screenHeight, QImage::Format_RGB32);
    image.fill(Qt::black);
    m_shell->unit()->screen()->render(&image);
    return image;
}

bool Tour::save(const QString& name, const QImage& picture)
{
    const QString path = QDir(m_folder).filePath(name + QLatin1String(".png"));
    return picture.save(path) || fail(QStringLiteral("%1 can't be written").arg(path));
}

bool Tour::fail(const QString& text)
{
    m_error = text;
    return false;
}

} // namespace headunit
