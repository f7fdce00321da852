#pragma once

#include <QIcon>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QWidget>

/// What the tests of forms share: one row a widget, compared with the widget that the form has built.
namespace formtable {

struct Row
{
    const char* name;
    const char* kind;
    const char* parent;
    QRect geometry;
    const char* style = "";
};

struct Icon
{
    const char* key;
    const char* normal;  ///< shown in Normal, Off
    const char* pressed; ///< shown in Selected, Off
    QSize size;
};

/// Empty when the widget of that name is as the row tells, else what differs.
inline QString difference(const QWidget* page, const Row& row)
{
    const auto* widget = page->findChild<QWidget*>(QLatin1String(row.name));
    if (!widget)
        return QStringLiteral("missing");
    QStringList result;
    if (QLatin1String(widget->metaObject()->className()) != QLatin1String(row.kind))
        result += QStringLiteral("is a %1").arg(QLatin1String(widget->metaObject()->className()));
    if (widget->parentWidget()->objectName() != QLatin1String(row.parent))
        result += QStringLiteral("lies in %1").arg(widget->parentWidget()->objectName());
    if (widget->geometry() != row.geometry) {
        const QRect is = widget->geometry();
        result += QStringLiteral("at %1,%2 %3x%4").arg(is.x()).arg(is.y()).arg(is.width()).arg(is.height());
    }
    if (widget->styleSheet() != QLatin1String(row.style))
        result += QStringLiteral("style \"%1\"").arg(widget->styleSheet());
    return result.join(QStringLiteral(", "));
}

/// Names of the direct children of parent that are widgets, in the order of their making.
inline QStringList childNames(const QWidget* parent)
{
    QStringList result;
    for (const QObject* child : parent->children()) {
        if (child->isWidgetType())
            result += child->objectName();
    }
    return result;
}

/// Whether icon shows the picture of that path, and that picture exists.
inline bool shows(const QIcon& icon, const QSize& size, QIcon::Mode mode, QIcon::State state,
                  const char* path)
{
    const QPixmap picture{QLatin1String(path)};
    return !picture.isNull() && icon.pixmap(size, mode, state).toImage() == picture.toImage();
}

/// Empty when the key holds the row's pictures at the row's size, else what differs.
inline QString difference(const QWidget* page, const Icon& row)
{
    const auto* key = page->findChild<QPushButton*>(QLatin1String(row.key));
    if (!key)
        return QStringLiteral("missing");
    QStringList result;
    if (key->iconSize() != row.size)
        result +=
            QStringLiteral("icon size %1x%2").arg(key->iconSize().width()).arg(key->iconSize().height());
    if (!shows(key->icon(), row.size, QIcon::Normal, QIcon::Off, row.normal))
        result += QStringLiteral("normal picture");
    if (!shows(key->icon(), row.size, QIcon::Selected, QIcon::Off, row.pressed))
        result += QStringLiteral("pressed picture");
    if (!key->isFlat() || key->focusPolicy() != Qt::TabFocus || !key->text().isEmpty())
        result += QStringLiteral("not a flat picture key without touch focus");
    return result.join(QStringLiteral(", "));
}

/// Signatures of one kind that the class itself declares, in the meta-object's order.
inline QStringList methods(const QObject* object, QMetaMethod::MethodType kind)
{
    QStringList result;
    const QMetaObject* meta = object->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        if (meta->method(i).methodType() == kind)
            result += QString::fromLatin1(meta->method(i).methodSignature());
    }
    return result;
}

} // namespace formtable
