#pragma once

#include <QIcon>
#include <QMetaMethod>
#include <QPixmap>
#include <QPushButton>
#include <QStringList>
#include <QWidget>

/// What page tests ask of a built form.
namespace formcheck {

/// Signatures of a class's own signals and slots, in declaration order.
inline QStringList ownMethods(const QMetaObject* meta)
{
    QStringList signatures;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
        signatures.append(QString::fromLatin1(meta->method(i).methodSignature()));
    return signatures;
}

/// Whether the icon holds a picture of its own in that state, and it is the one of that file.
inline bool holds(const QIcon& icon, QIcon::Mode mode, QIcon::State state, const QString& path)
{
    const QPixmap picture(path);
    return !picture.isNull() && icon.availableSizes(mode, state) == QList<QSize>{picture.size()} &&
           icon.pixmap(picture.size(), mode, state).toImage() == picture.toImage();
}

/// Normal picture in Normal/Off, pressed one in Selected/Off, nothing else.
inline bool isPlainKeyIcon(const QIcon& icon, const QString& normal, const QString& pressed)
{
    return holds(icon, QIcon::Normal, QIcon::Off, normal) &&
           holds(icon, QIcon::Selected, QIcon::Off, pressed) &&
           icon.availableSizes(QIcon::Normal, QIcon::On).isEmpty() &&
           icon.availableSizes(QIcon::Selected, QIcon::On).isEmpty();
}

/// The object of that name and kind, or a test abort that names it.
template <typename T = QWidget>
T* child(const QWidget* page, const QString& name)
{
    T* found = page->findChild<T*>(name);
    if (!found)
        qFatal("the form has no object \"%s\" of that kind", qPrintable(name));
    return found;
}

} // namespace formcheck
