#include "tests/platform/hvaudio/files/nodes.h"

#include "platform/hvaudio/files/replacement.h"

#include <QtTest>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace hvaudio;

namespace {

/// What the library asks of the kernel, in order: "sync" of a file, "sync folder", "rename".
QStringList asked;
bool mediumFails = false;

/// The administrator may write everything; what an ordinary user may is seen as one.
class AsOrdinaryUser
{
public:
    explicit AsOrdinaryUser(const QString& folder)
    {
        if (geteuid() == 0 && chown(QFile::encodeName(folder).constData(), nobody, gid_t(-1)) == 0)
            m_changed = seteuid(nobody) == 0;
    }
    ~AsOrdinaryUser()
    {
        if (m_changed && seteuid(0) != 0)
            qFatal("can't be the administrator again");
    }

private:
    static constexpr uid_t nobody = 65534;
    bool m_changed = false;
};

} // namespace

extern "C" __attribute__((visibility("default"))) int fsync(int file)
{
    struct stat is = {};
    asked << (fstat(file, &is) == 0 && S_ISDIR(is.st_mode) ? "sync folder" : "sync");
    if (mediumFails) {
        errno = EIO;
        return -1;
    }
    return int(syscall(SYS_fsync, file));
}

extern "C" __attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept
{
    asked << "rename";
    return int(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

class TestReplacement : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void targetChangesInOneStepAtTheEnd();
    void unfinishedFileGoesAndTheTargetStays();
    void noFileThatIsThereIsTouched();
    void linksAreFollowedAndStay_data();
    void linksAreFollowedAndStay();
    void modeIsTheOneOfANewFile();
    void modeOfTheTargetIsKept();
    void refusalSaysWhyAndLeavesEverything_data();
    void refusalSaysWhyAndLeavesEverything();
    void longestNameIsPossible();
    void fileWithoutLeaveToWriteIsNotReplaced();
    void targetThatBecameAFolderIsSaid();
    void contentsReachTheMediumBeforeTheName();
    void contentsThatDontReachTheMediumReplaceNothing();

private:
    std::string path(const char* name) const { return m_folder->filePath(name).toStdString(); }
    bool put(const char* name, const QByteArray& contents) const;
    QByteArray contents(const char* name) const;
    QStringList entries() const;
    /// A whole replacement; the sentence of what failed.
    std::string replace(const std::string& name, const QByteArray& contents) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestReplacement::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

bool TestReplacement::put(const char* name, const QByteArray& contents) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

QByteArray TestReplacement::contents(const char* name) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList TestReplacement::entries() const
{
    return QDir(m_folder->path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

std::string TestReplacement::replace(const std::string& name, const QByteArray& contents) const
{
    std::string error;
    const auto file = Replacement::create(name, error);
    if (!file)
        return error;
    if (write(file->descriptor(), contents.constData(), std::size_t(contents.size())) != contents.size())
        return "can't be written";
    return file->finish(error) ? std::string() : error;
}

void TestReplacement::targetChangesInOneStepAtTheEnd()
{
    for (const char* old : {"", "old"}) {
        if (*old)
            QVERIFY(put("out.wav", old));
        std::string error;
        const auto file = Replacement::create(path("out.wav"), error);
        QVERIFY2(file, error.c_str());
        QCOMPARE(write(file->descriptor(), "new", 3), ssize_t(3));
        QCOMPARE(contents("out.wav"), QByteArray(old));
        QVERIFY2(file->finish(error), error.c_str());
        QCOMPARE(contents("out.wav"), QByteArray("new"));
        QCOMPARE(entries(), QStringList{"out.wav"});
        QVERIFY(QFile::remove(m_folder->filePath("out.wav")));
    }
}

void TestReplacement::unfinishedFileGoesAndTheTargetStays()
{
    QVERIFY(put("out.wav", "old"));
    for (const char* name : {"out.wav", "new.wav"}) {
        std::string error;
        QVERIFY2(Replacement::create(path(name), error), error.c_str());
        QCOMPARE(entries(), QStringList{"out.wav"});
        QCOMPARE(contents("out.wav"), QByteArray("old"));
    }
}

void TestReplacement::noFileThatIsThereIsTouched()
{
    const QStringList names{"out.part", "out.wav.part", "out.wav~", "unfinished-1.wav"};
    for (const QString& name : names)
        QVERIFY(put(name.toLatin1().constData(), name.toLatin1()));
    QCOMPARE(replace(path("out.wav"), "new"), std::string());
    for (const QString& name : names)
        QCOMPARE(contents(name.toLatin1().constData()), name.toLatin1());
    QCOMPARE(entries().size(), names.size() + 1);
}

void TestReplacement::linksAreFollowedAndStay_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("exists");
    QTest::newRow("beside it") << "target.wav" << true;
    QTest::newRow("below it") << "sub/target.wav" << true;
    QTest::newRow("through its own folder") << "sub/../target.wav" << true;
    QTest::newRow("absolute") << "/" << true;
    QTest::newRow("to another link") << "link2" << true;
    QTest::newRow("to nothing yet") << "target.wav" << false;
    QTest::newRow("to nothing yet, below it") << "sub/target.wav" << false;
    QTest::newRow("to a link to nothing yet") << "link2" << false;
}

void TestReplacement::linksAreFollowedAndStay()
{
    QFETCH(QString, text);
    QFETCH(bool, exists);
    QVERIFY(QDir(m_folder->path()).mkdir("sub"));
    const QByteArray target = text.startsWith("sub/t") ? "sub/target.wav" : "target.wav";
    if (exists)
        QVERIFY(put(target.constData(), "old"));
    if (text == "/")
        text = m_folder->filePath("target.wav");
    QCOMPARE(symlink("target.wav", path("link2").c_str()), 0);
    QCOMPARE(symlink(text.toLatin1().constData(), path("link").c_str()), 0);
    QCOMPARE(replace(path("link"), "new"), std::string());
    QCOMPARE(contents(target.constData()), QByteArray("new"));
    QVERIFY(nodes::kind(path("link")) == S_IFLNK && nodes::kind(path("link2")) == S_IFLNK);
    QVERIFY(nodes::kind(path(target.constData())) == S_IFREG);
    QCOMPARE(entries().filter("unfinished"), QStringList());
}

void TestReplacement::modeIsTheOneOfANewFile()
{
    const mode_t before = umask(0);
    for (const mode_t mask : {0000, 0022, 0027, 0077}) {
        umask(mask);
        const std::string name = path(QByteArray::number(mask).constData());
        QCOMPARE(replace(name, "new"), std::string());
        QCOMPARE(nodes::permissions(name), mode_t(0666 & ~mask));
    }
    umask(before);
}

void TestReplacement::modeOfTheTargetIsKept()
{
    QVERIFY(put("out.wav", "old"));
    for (const mode_t mode : {0600, 0664, 0755}) {
        QCOMPARE(chmod(path("out.wav").c_str(), mode), 0);
        QCOMPARE(replace(path("out.wav"), "new"), std::string());
        QCOMPARE(nodes::permissions(path("out.wav")), mode);
    }
}

void TestReplacement::refusalSaysWhyAndLeavesEverything_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("says");
    QTest::newRow("pipe") << "pipe"
                          << "it is a pipe";
    QTest::newRow("link to a pipe") << "to-pipe"
                                    << "it is a pipe";
    QTest::newRow("socket") << "socket"
                            << "it is a socket";
    QTest::newRow("folder") << "sub"
                            << "it is a folder";
    QTest::newRow("folder with a slash") << "sub/"
                                         << "it is a folder";
    QTest::newRow("link to a folder") << "to-sub"
                                      << "it is a folder";
    if (geteuid() == 0)
        QTest::newRow("device") << "device"
                                << "it is a device";
    QTest::newRow("new folder's name") << "new/"
                                       << "it is no file name";
    QTest::newRow("nothing") << ""
                             << "it is no file name";
    QTest::newRow("in a folder that isn't there") << "no/such"
                                                  << "No such file";
    QTest::newRow("below a file") << "file/out.wav"
                                  << "Not a directory";
    QTest::newRow("link to itself") << "circle"
                                    << "symbolic links";
    QTest::newRow("open file that has lost its name") << "/proc/self/fd/"
                                                      << "links";
}

void TestReplacement::refusalSaysWhyAndLeavesEverything()
{
    QFETCH(QString, name);
    QFETCH(QString, says);
    QVERIFY(nodes::pipe(path("pipe")) && nodes::socket(path("socket")) && put("file", "old"));
    QVERIFY(geteuid() != 0 || nodes::device(path("device")));
    QVERIFY(QDir(m_folder->path()).mkdir("sub"));
    for (const auto& link : {std::make_pair("pipe", "to-pipe"), {"sub", "to-sub"}, {"circle", "circle"}})
        QCOMPARE(symlink(link.first, path(link.second).c_str()), 0);
    const Descriptor nameless(open(path("nameless").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    QCOMPARE(unlink(path("nameless").c_str()), 0);
    const QStringList before = entries();
    std::map<QString, mode_t> kinds;
    for (const QString& entry : before)
        kinds[entry] = nodes::kind(m_folder->filePath(entry).toStdString());

    const std::string out = name.isEmpty() ? std::string()
                            : name.startsWith("/")
                                ? name.toStdString() + std::to_string(nameless.get())
                                : m_folder->path().toStdString() + "/" + name.toStdString();
    const std::string error = replace(out, "new");
    QVERIFY2(QString::fromStdString(error).contains(says), error.c_str());
    QVERIFY2(error.find("'" + out + "'") != std::string::npos, error.c_str());
    QCOMPARE(entries(), before);
    for (const QString& entry : before)
        QCOMPARE(nodes::kind(m_folder->filePath(entry).toStdString()), kinds[entry]);
    QCOMPARE(contents("file"), QByteArray("old"));
}

void TestReplacement::longestNameIsPossible()
{
    const std::string name(255, 'x');
    QCOMPARE(replace(path(name.c_str()), "new"), std::string());
    QCOMPARE(contents(name.c_str()), QByteArray("new"));
}

void TestReplacement::fileWithoutLeaveToWriteIsNotReplaced()
{
    const AsOrdinaryUser user(m_folder->path());
    QVERIFY(put("out.wav", "precious"));
    QCOMPARE(chmod(path("out.wav").c_str(), 0444), 0);
    const std::string error = replace(path("out.wav"), "new");
    QVERIFY2(error.find("Permission denied") != std::string::npos, error.c_str());
    QCOMPARE(contents("out.wav"), QByteArray("precious"));
    QCOMPARE(entries(), QStringList{"out.wav"});
}

void TestReplacement::targetThatBecameAFolderIsSaid()
{
    std::string error;
    auto file = Replacement::create(path("out.wav"), error);
    QVERIFY2(file, error.c_str());
    QVERIFY(QDir(m_folder->path()).mkdir("out.wav"));
    QVERIFY(!file->finish(error));
    QVERIFY2(error.find("'" + path("out.wav") + "'") != std::string::npos, error.c_str());
    file.reset();
    QCOMPARE(entries(), QStringList{"out.wav"});
}

void TestReplacement::contentsReachTheMediumBeforeTheName()
{
    asked.clear();
    QCOMPARE(QString::fromStdString(replace(path("out.wav"), "new")), QString());
    QCOMPARE(asked, (QStringList{"sync", "rename", "sync folder"}));
}

void TestReplacement::contentsThatDontReachTheMediumReplaceNothing()
{
    QVERIFY(put("out.wav", "precious"));
    mediumFails = true;
    const QString why = QString::fromStdString(replace(path("out.wav"), "new"));
    mediumFails = false;
    QVERIFY2(why.contains("out.wav") && why.contains(std::strerror(EIO)), qPrintable(why));
    QCOMPARE(contents("out.wav"), QByteArray("precious"));
    QCOMPARE(entries(), QStringList{"out.wav"});
}

QTEST_GUILESS_MAIN(TestReplacement)
#include "tst_replacement.moc"
