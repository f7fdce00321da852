#pragma once

#include <QIcon>
#include <QPixmap>
#include <QPushButton>
#include <QWidget>
#include <QtTest>

/// What page tests ask of a built form, most of it as tables of one row a widget.
namespace formcheck {

/// The object of that name and kind, or a test abort that names it.
template <typename T = QWidget>
T* child(const QWidget* page, const QString& name)
{
    T* found = page->findChild<T*>(name);
    if (!found)
        qFatal("the form has no object \"%s\" of that kind", qPrintable(name));
    return found;
}

/// For a test's _data() function: one row for each of the table's, named by that member of it, and a column
/// that counts them.
template <typename Table, typename Row>
void addRows(const Table& table, const char* Row::*name, const char* column = "row")
{
    QTest::addColumn<int>(column);
    int number = 0;
    for (const auto& row : table)
        QTest::newRow(row.*name) << number++;
}

/// Names of the direct children of parent that are widgets, in the order of their making.
inline QStringList childNames(const QWidget* parent)
{
    QStringList names;
    for (const QObject* each : parent->children()) {
        if (each->isWidgetType())
            names += each->objectName();
    }
    return names;
}

constexpr int anyMethod = -1;

/// Signatures of a class's own methods of one kind (QMetaMethod::MethodType) or any, in declaration order.
inline QStringList ownMethods(const QMetaObject* meta, int kind = anyMethod)
{
    QStringList signatures;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        if (kind == anyMethod || meta->method(i).methodType() == kind)
            signatures.append(QString::fromLatin1(meta->method(i).methodSignature()));
    }
    return signatures;
}

struct Place
{
    const char* name;
    const char* kind;
    const char* parent;
    QRect geometry;
};

struct Row : Place
{
    const char* style = "";
};

/// Empty when the widget of that name is as the row tells, else what differs.
inline QString difference(const QWidget* page, const Place& row)
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
    return result.join(QStringLiteral(", "));
}

inline QString difference(const QWidget* page, const Row& row)
{
    QString result = difference(page, static_cast<const Place&>(row));
    const auto* widget = page->findChild<QWidget*>(QLatin1String(row.name));
    if (widget && widget->styleSheet() != QLatin1String(row.style))
        result += QStringLiteral(" style \"%1\"").arg(widget->styleSheet());
    return result;
}

/// Whether shown is the picture of that path, and that picture exists.
inline bool shows(const QPixmap& shown, const QString& path)
{
    const QPixmap picture(path);
    return !picture.isNull() && shown.toImage() == picture.toImage();
}

/// Whether the icon shows that picture in that state, whatever state it is taken from.
inline bool shows(const QIcon& icon, const QSize& size, QIcon::Mode mode, QIcon::State state,
                  const QString& path)
{
    return shows(icon.pixmap(size, mode, state), path);
}

/// Whether the icon holds a picture of its own in that state, and it is the one of that file.
inline bool holds(const QIcon& icon, QIcon::Mode mode, QIcon::State state, const QString& path)
{
    const QSize size = QPixmap(path).size();
    return icon.availableSizes(mode, state) == QList<QSize>{size} && shows(icon, size, mode, state, path);
}

/// Normal picture in Normal/Off, pressed one in Selected/Off, nothing else.
inline bool isPlainKeyIcon(const QIcon& icon, const QString& normal, const QString& pressed)
{
    return holds(icon, QIcon::Normal, QIcon::Off, normal) &&
           holds(icon, QIcon::Selected, QIcon::Off, pressed) &&
           icon.availableSizes(QIcon::Normal, QIcon::On).isEmpty() &&
           icon.availableSizes(QIcon::Selected, QIcon::On).isEmpty();
}

struct Icon
{
    const char* key;
    const char* normal;  ///< shown in Normal, Off
    const char* pressed; ///< shown in Selected, Off
    QSize size;
};

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

} // namespace formcheck
