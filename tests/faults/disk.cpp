#include "tests/faults/disk.h"

#include <QFile>

#include <cstring>

namespace {
constexpr int sector = 512;
} // namespace

bool FileOperation::readAll(const QString& record, QVector<FileOperation>* operations)
{
    QFile file(record);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    while (!file.atEnd()) {
        FileRecord head = {};
        if (file.read(reinterpret_cast<char*>(&head), sizeof(head)) != sizeof(head))
            return false;
        const QByteArray path = file.read(head.pathSize);
        const QByteArray data = file.read(static_cast<qint64>(head.dataSize));
        if (path.size() != static_cast<int>(head.pathSize) || data.size() != static_cast<int>(head.dataSize))
            return false;
        operations->append({head.kind, QFile::decodeName(path), static_cast<qint64>(head.offset), data});
    }
    return true;
}

Disk::Disk(const Image& synced)
{
    for (auto file = synced.begin(); file != synced.end(); ++file) {
        m_names[file.key()] = m_files.size();
        m_files.append(File{*file, {}});
    }
    m_syncedNames = m_names;
}

void Disk::change(const NameChange& change)
{
    make(change, &m_names);
    m_unsyncedNames.append(change);
}

void Disk::make(const NameChange& change, Names* names)
{
    // Where it comes without the one before it, there may be another file under the old name, or none.
    if (names->value(change.from, -1) == change.number)
        names->remove(change.from);
    if (!change.to.isEmpty())
        names->insert(change.to, change.number);
}

void Disk::apply(const FileOperation& operation)
{
    const int number = m_names.value(operation.path, -1);
    switch (operation.kind) {
    case FileRecord::Create:
        m_files.append(File());
        change({QString(), operation.path, m_files.size() - 1});
        break;
    case FileRecord::Write:
    case FileRecord::Truncate:
        m_files[number].unsynced.append(
            {operation.kind == FileRecord::Truncate, operation.offset, operation.data});
        m_latest = number;
        break;
    case FileRecord::Sync:
        if (number < 0) { // no file: the folder
            m_syncedNames = m_names;
            m_unsyncedNames.clear();
        } else {
            m_files[number].synced = fullContent(m_files[number], nullptr);
            m_files[number].unsynced.clear();
        }
        break;
    case FileRecord::Rename:
        change({operation.path, QFile::decodeName(operation.data), number});
        break;
    case FileRecord::Unlink:
        change({operation.path, QString(), number});
        break;
    case FileRecord::Mark:
        break;
    }
}

bool Disk::isUnsettled() const
{
    if (!m_unsyncedNames.isEmpty())
        return true;
    for (int number : m_names) {
        if (!m_files.at(number).unsynced.isEmpty())
            return true;
    }
    return false;
}

Disk::Image Disk::worst() const
{
    return image(m_syncedNames, syncedContent);
}

Disk::Image Disk::best() const
{
    return image(m_names, fullContent);
}

Disk::Image Disk::namesOnly() const
{
    return image(m_names, syncedContent);
}

Disk::Image Disk::contentsOnly() const
{
    return image(m_syncedNames, fullContent);
}

Disk::Image Disk::latestNameOnly() const
{
    Names names = m_syncedNames;
    if (!m_unsyncedNames.isEmpty())
        make(m_unsyncedNames.last(), &names);
    return image(names, fullContent);
}

Disk::Image Disk::tornLatest() const
{
    Image torn = best();
    for (auto name = m_names.begin(); name != m_names.end(); ++name) {
        if (*name == m_latest)
            torn[name.key()] = tornContent(m_files.at(m_latest), nullptr);
    }
    return torn;
}

Disk::Image Disk::anyhow(QRandomGenerator* random) const
{
    Names names = m_syncedNames;
    const bool inOrder = random->bounded(2) == 0;
    const int last = random->bounded(m_unsyncedNames.size() + 1);
    for (int i = 0; i < m_unsyncedNames.size(); ++i) {
        if (inOrder ? i < last : random->bounded(2) == 0)
            make(m_unsyncedNames.at(i), &names);
    }
    return image(names, chanceContent, random);
}

Disk::Image Disk::image(const Names& names, Contents contents, QRandomGenerator* random) const
{
    Image all;
    for (auto name = names.begin(); name != names.end(); ++name)
        all[name.key()] = contents(m_files.at(*name), random);
    return all;
}

void Disk::make(const Change& change, QByteArray* content)
{
    if (change.truncates) {
        const int before = content->size();
        content->resize(static_cast<int>(change.offset));
        if (content->size() > before)
            std::memset(content->data() + before, 0, static_cast<std::size_t>(content->size() - before));
        return;
    }
    const int end = static_cast<int>(change.offset) + change.data.size();
    if (content->size() < end)
        make({true, end, {}}, content);
    content->replace(static_cast<int>(change.offset), change.data.size(), change.data);
}

QByteArray Disk::syncedContent(const File& file, QRandomGenerator*)
{
    return file.synced;
}

QByteArray Disk::fullContent(const File& file, QRandomGenerator*)
{
    QByteArray content = file.synced;
    for (const Change& change : file.unsynced)
        make(change, &content);
    return content;
}

QByteArray Disk::tornContent(const File& file, QRandomGenerator*)
{
    QByteArray content = file.synced;
    for (int i = 0; i < file.unsynced.size(); ++i) {
        Change change = file.unsynced.at(i);
        if (i == file.unsynced.size() - 1) {
            if (change.truncates)
                break;
            change.data = change.data.left(change.data.size() / 2);
        }
        make(change, &content);
    }
    return content;
}

QByteArray Disk::chanceContent(const File& file, QRandomGenerator* random)
{
    QByteArray content = file.synced;
    for (const Change& change : file.unsynced) {
        switch (random->bounded(4)) {
        case 0: // lost, while later ones may be there
            break;
        case 1: // torn: each sector is there or not
            for (qint64 from = 0; !change.truncates && from < change.data.size();) {
                const qint64 end = qMin<qint64>(
                    (change.offset + from) / sector * sector + sector - change.offset, change.data.size());
                if (random->bounded(2) == 0)
                    make({false, change.offset + from,
                          change.data.mid(static_cast<int>(from), static_cast<int>(end - from))},
                         &content);
                from = end;
            }
            break;
        default:
            make(change, &content);
        }
    }
    return content;
}
