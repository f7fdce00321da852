#include "headunit/cli/tour.h"

#include "headunit/front/launcher.h"
#include "headunit/front/screen.h"
#include "headunit/shell/audiopages.h"
#include "headunit/shell/shell.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPainter>

#include <iterator>

namespace headunit {

namespace {

constexpr int pageAreaHeight = 510;

// clang-format off
constexpr const char* pagePictures[] = {
    "page-0-equalizer",
    "page-1-audio-levels",
    "page-2-crossover",
    "page-3-time-alignment",
    "page-4-eq-presets",
    "page-5-volume-levels",
};
// clang-format on
static_assert(std::size(pagePictures) == audioPageCount, "one picture a page");

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
    const RememberedPage remembered; // touching the tile makes the audio settings note a page
    const bool done = visitLauncher() && visitPages();
    m_shell->leaveApplication();
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
    QImage before;
    for (int page = 0; page < audioPageCount; ++page) {
        if (!m_shell->openAudioPage(page))
            return fail(QStringLiteral("page %1 can't be shown").arg(page));
        settle();
        if (!m_shell->front())
            return fail(QStringLiteral("page %1 left the application").arg(page));
        const QImage shown = picture(), area = shown.copy(0, 0, shown.width(), pageAreaHeight);
        if (isPlain(area))
            return fail(QStringLiteral("page %1 shows nothing").arg(page));
        if (area == before)
            return fail(QStringLiteral("page %1 looks as the one before").arg(page));
        before = area;
        if (!save(QLatin1String(pagePictures[page]), shown))
            return false;
    }
    return true;
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
