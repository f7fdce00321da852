#include "platform/common/widgets/pictureicons.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <utility>

namespace cm {

namespace {

QHash<QString, QPixmap>& shownPictures()
{
    static QHash<QString, QPixmap> all;
    return all;
}

QPixmap picture(const QString& path)
{
    QHash<QString, QPixmap>& all = shownPictures();
    if (all.isEmpty())
        qAddPostRoutine([] { shownPictures().clear(); }); // pixmaps go before the application object does
    auto known = all.constFind(path);
    if (known == all.constEnd())
        known = all.insert(path, QPixmap(path));
    return *known;
}

} // namespace

void PictureIconEngine::addFile(const QString& fileName, const QSize&, QIcon::Mode mode, QIcon::State state)
{
    if (QFileInfo::exists(fileName))
        m_files.append({fileName, mode, state});
}

void PictureIconEngine::addPixmap(const QPixmap& pixmap, QIcon::Mode mode, QIcon::State state)
{
    m_decoded.addPixmap(pixmap, mode, state);
}

void PictureIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    painter->drawPixmap(rect, pixmap(rect.size(), mode, state));
}

QPixmap PictureIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    return decoded(mode, state).pixmap(size, mode, state);
}

QSize PictureIconEngine::actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    return decoded(mode, state).actualSize(size, mode, state);
}

QList<QSize> PictureIconEngine::availableSizes(QIcon::Mode mode, QIcon::State state) const
{
    return has(mode, state) ? decoded(mode, state).availableSizes(mode, state) : QList<QSize>();
}

void PictureIconEngine::virtual_hook(int id, void* data)
{
    if (id == QIconEngine::IsNullHook)
        *static_cast<bool*>(data) = m_files.isEmpty() && m_decoded.isNull();
    else
        QIconEngine::virtual_hook(id, data);
}

bool PictureIconEngine::has(QIcon::Mode mode, QIcon::State state) const
{
    return !m_decoded.availableSizes(mode, state).isEmpty() ||
           std::any_of(m_files.cbegin(), m_files.cend(),
                       [&](const File& file) { return file.mode == mode && file.state == state; });
}

const QIcon& PictureIconEngine::decoded(QIcon::Mode mode, QIcon::State state) const
{
    // A picture of that very mode and state wins over every other, so that the others aren't looked at.
    const bool all = !has(mode, state);
    const auto wanted = [&](const File& file) { return all || (file.mode == mode && file.state == state); };
    for (const File& file : std::as_const(m_files)) {
        if (wanted(file))
            m_decoded.addPixmap(picture(file.path), file.mode, file.state);
    }
    m_files.erase(std::remove_if(m_files.begin(), m_files.end(), wanted), m_files.end());
    return m_decoded;
}

QIconEngine* PictureIcons::create(const QString&)
{
    return qFuzzyCompare(qApp->devicePixelRatio(), 1.0) ? new PictureIconEngine : nullptr;
}

} // namespace cm
