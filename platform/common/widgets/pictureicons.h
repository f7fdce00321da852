#pragma once

#include <QIcon>
#include <QIconEngine>
#include <QIconEnginePlugin>
#include <QVector>

namespace cm {

/// What a QIcon of PNG files is made of where UnitStyle is installed: each picture is decoded when it is
/// first shown, not when the icon is built, and only once in the process, however many icons and pages show
/// it. Qt's own engine decodes every state of every key in setupUi, and again each time a page is made.
///
/// What is shown is what Qt's engine shows: it chooses among the pictures. A file that exists counts as a
/// picture; its own size counts, not the one that addFile() is given. Thread: GUI.
class PictureIconEngine : public QIconEngine
{
public:
    PictureIconEngine() = default;

    void addFile(const QString& fileName, const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    void addPixmap(const QPixmap& pixmap, QIcon::Mode mode, QIcon::State state) override;
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) const override;
    QIconEngine* clone() const override { return new PictureIconEngine(*this); }
    /// Answers isNull().
    void virtual_hook(int id, void* data) override;

private:
    struct File
    {
        QString path;
        QIcon::Mode mode;
        QIcon::State state;
    };
    /// Decodes what answers for that mode and state: its own pictures, or all where it has none.
    const QIcon& decoded(QIcon::Mode mode, QIcon::State state) const;
    bool has(QIcon::Mode mode, QIcon::State state) const;

    mutable QVector<File> m_files; ///< not decoded yet
    mutable QIcon m_decoded;
};

/// Names PictureIconEngine to Qt: a plug-in beside libcommon, in the folder that Qt looks for. Qt reads what
/// one that is built in says of itself anew for every icon and for many a widget.
class PictureIcons : public QIconEnginePlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QIconEngineFactoryInterface_iid FILE "pictureicons.json")
public:
    /// Null, which leaves it to Qt's own engine, on a screen of another density than 1.
    QIconEngine* create(const QString& fileName) override;
};

} // namespace cm
