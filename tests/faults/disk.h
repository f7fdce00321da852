#pragma once

#include "tests/faults/filerecord.h"

#include <QByteArray>
#include <QMap>
#include <QRandomGenerator>
#include <QString>
#include <QVector>

/// An operation of the record.
struct FileOperation
{
    FileRecord::Kind kind;
    QString path;
    qint64 offset;
    QByteArray data;

    /// False when the record can't be read or ends in the middle.
    static bool readAll(const QString& record, QVector<FileOperation>* operations);
};

/// The files of one folder between the program and the medium: what has been synced is there after a power
/// cut, of the rest some is and some isn't. Contents are lost, torn at any sector and reordered as may be.
/// What was made, renamed and removed since the folder's last sync is there up to one of these changes, as
/// file systems with a journal have it, or any of them is and any isn't.
class Disk
{
public:
    using Image = QMap<QString, QByteArray>; ///< contents by name

    explicit Disk(const Image& synced);

    void apply(const FileOperation& operation);
    /// There is something that a power cut could lose.
    bool isUnsettled() const;

    /// What a power cut leaves that loses all that wasn't synced, or nothing.
    Image worst() const;
    Image best() const;
    /// All names, and nothing of the contents; all contents, and no name.
    Image namesOnly() const;
    Image contentsOnly() const;
    /// All contents, and of the names only the latest change.
    Image latestNameOnly() const;
    /// All but the latest write, of which the first half is there.
    Image tornLatest() const;
    /// As chance will have it.
    Image anyhow(QRandomGenerator* random) const;

private:
    struct Change
    {
        bool truncates;
        qint64 offset;
        QByteArray data;
    };
    struct File
    {
        QByteArray synced;
        QVector<Change> unsynced;
    };
    using Names = QMap<QString, int>; ///< numbers of files by name
    struct NameChange
    {
        QString from, to; ///< empty for a file that is made, or removed
        int number;
    };
    using Contents = QByteArray (*)(const File& file, QRandomGenerator* random);

    void change(const NameChange& change);
    static void make(const NameChange& change, Names* names);
    static void make(const Change& change, QByteArray* content);
    static QByteArray syncedContent(const File& file, QRandomGenerator*);
    static QByteArray fullContent(const File& file, QRandomGenerator*);
    static QByteArray tornContent(const File& file, QRandomGenerator*);
    static QByteArray chanceContent(const File& file, QRandomGenerator* random);
    Image image(const Names& names, Contents contents, QRandomGenerator* random = nullptr) const;

    QVector<File> m_files;
    Names m_names;
    Names m_syncedNames;
    QVector<NameChange> m_unsyncedNames;
    int m_latest = -1; ///< the file that was written last
};
