// The other end of the picture library: what the forms and sources of the unit ask for. Every picture asked
// for exists, every picture that exists is asked for, and no form asks for one at another size than its own.
//
// A source names a picture in one of three ways, and in no other: by its whole path; by a path with %1 in it;
// or by its file name beside a literal that is one of the folders, in the same file.

#include "tests/platform/icons/pictures.h"

#include <QDirIterator>
#include <QDomDocument>
#include <QImageReader>
#include <QObject>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

const QStringList& pictureFolders()
{
    static const QStringList list{
        QStringLiteral(":/vexa_m5qx_audiosettingicon/"),
        QStringLiteral(":/vexa_m5qx_settingicon_ext/"),
        QStringLiteral(":/dual_icon/"),
        QStringLiteral(":/icon/eq_icon/"),
    };
    return list;
}

QStringList picturePaths()
{
    QStringList list;
    for (const pictures::Row& row : pictures::rows()) {
        list << row.path;
    }
    return list;
}

QString read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList filesOf(const QStringList& endings)
{
    QStringList list;
    for (const char* folder : {"mainwindow", "M5QX", "headunit", "platform/common"}) {
        QDirIterator it(QStringLiteral(SOURCE_ROOT "/") + folder, endings, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            list << it.next();
        }
    }
    list.sort();
    return list;
}

/// Paths that a form names, in the order of the text.
QStringList pathsOfForm(const QString& text)
{
    static const QRegularExpression element(QStringLiteral(">(:/[^<]+)<"));
    QStringList list;
    auto it = element.globalMatch(text);
    while (it.hasNext()) {
        list << it.next().captured(1).replace(QLatin1String("&amp;"), QLatin1String("&"));
    }
    return list;
}

/// Paths that a source names, as patterns: '*' stands for what is put in while running.
QStringList pathsOfSource(QString text)
{
    static const QRegularExpression comment(QStringLiteral("/\\*.*?\\*/|(?<!:)//[^\\n]*"),
                                            QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression literal(QStringLiteral("\"([^\"\\\\\\n]*)\""));
    static const QRegularExpression argument(QStringLiteral("%[0-9]+"));
    text.remove(comment);
    QStringList whole;
    QStringList names;
    QStringList folders;
    auto it = literal.globalMatch(text);
    while (it.hasNext()) {
        QString string = it.next().captured(1);
        string.replace(argument, QStringLiteral("*"));
        if (pictureFolders().contains(string)) {
            folders << string;
        } else if (string.startsWith(QLatin1String(":/"))) {
            whole << string;
        } else if (string.endsWith(QLatin1String(".png")) && !string.contains('/')) {
            names << string;
        }
    }
    folders.removeDuplicates();
    for (const QString& name : std::as_const(names)) {
        for (const QString& folder : std::as_const(folders)) {
            // With several folders in a file only the ones that hold the name can be meant.
            if (folders.size() == 1 || QFile::exists(folder + name) || name.contains('*')) {
                whole << folder + name;
            }
        }
    }
    return whole;
}

bool isOurs(const QString& path)
{
    for (const QString& folder : pictureFolders()) {
        if (path.startsWith(folder)) {
            return true;
        }
    }
    return false;
}

/// Pictures that a path or pattern means.
QStringList matching(const QString& path, const QStringList& all)
{
    const QRegularExpression pattern(QRegularExpression::wildcardToRegularExpression(path));
    return path.contains('*') ? all.filter(pattern) : all.contains(path) ? QStringList{path} : QStringList{};
}

QDomElement formProperty(const QDomElement& widget, const QString& name)
{
    for (QDomElement e = widget.firstChildElement("property"); !e.isNull();
         e = e.nextSiblingElement("property")) {
        if (e.attribute("name") == name) {
            return e;
        }
    }
    return {};
}

QSize sizeOf(const QDomElement& e)
{
    return {e.firstChildElement("width").text().toInt(), e.firstChildElement("height").text().toInt()};
}

} // namespace

class TestReferences : public QObject
{
    Q_OBJECT

private slots:
    void formsAreReadWithTheirEntities();
    void sourcesAreReadInEachWayOfNaming_data();
    void sourcesAreReadInEachWayOfNaming();
    void everyFolderHasFilesToRead();
    void everyPictureAskedForExists();
    void everyPictureIsAskedFor();
    void formsShowPicturesAtTheirOwnSize();
};

void TestReferences::formsAreReadWithTheirEntities()
{
    QCOMPARE(pathsOfForm("<normaloff>:/a/R&amp;B_n.png</normaloff><normalon>:/a/b.png</normalon>:/a/c.png"),
             (QStringList{":/a/R&B_n.png", ":/a/b.png"}));
}

void TestReferences::sourcesAreReadInEachWayOfNaming_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QStringList>("paths");
    const QString folder = ":/dual_icon/";
    // clang-format off
    QTest::newRow("whole path")          << "x(\":/dual_icon/a.png\");"                      << QStringList{folder + "a.png"};
    QTest::newRow("path with argument")  << "x(\":/dual_icon/a%1_n.png\");"                  << QStringList{folder + "a*_n.png"};
    QTest::newRow("name beside folder")  << "#define D \":/dual_icon/\"\nx(D \"a.png\");"    << QStringList{folder + "a.png"};
    QTest::newRow("line comment")        << "// \":/dual_icon/a.png\"\n"                     << QStringList{};
    QTest::newRow("block comment")       << "/* \":/dual_icon/a.png\"\n*/"                   << QStringList{};
    QTest::newRow("name without folder") << "x(\"a.png\");"                                  << QStringList{};
    // clang-format on
}

void TestReferences::sourcesAreReadInEachWayOfNaming()
{
    QFETCH(QString, source);
    QTEST(pathsOfSource(source), "paths");
}

void TestReferences::everyFolderHasFilesToRead()
{
    const QString all = filesOf({"*.ui", "*.cpp", "*.h"}).join('\n');
    for (const char* folder : {"mainwindow", "M5QX", "headunit", "platform/common"}) {
        QVERIFY2(all.contains(QStringLiteral(SOURCE_ROOT "/%1/").arg(folder)), folder);
    }
    QVERIFY(filesOf({"*.ui"}).size() >= 9);
}

void TestReferences::everyPictureAskedForExists()
{
    const QStringList all = picturePaths();
    QStringList missing;
    const auto check = [&all, &missing](const QString& file, const QStringList& paths) {
        for (const QString& path : paths) {
            if (isOurs(path) && matching(path, all).isEmpty()) {
                missing << path + " (" + file.mid(qstrlen(SOURCE_ROOT) + 1) + ')';
            }
        }
    };
    for (const QString& file : filesOf({"*.ui"})) {
        check(file, pathsOfForm(read(file)));
    }
    for (const QString& file : filesOf({"*.cpp", "*.h"})) {
        check(file, pathsOfSource(read(file)));
    }
    missing.removeDuplicates();
    QVERIFY2(missing.isEmpty(), qPrintable("no picture for " + missing.join(", ")));
}

void TestReferences::everyPictureIsAskedFor()
{
    const QStringList all = picturePaths();
    QVERIFY(all.size() > 80);
    QSet<QString> unused(all.cbegin(), all.cend());
    const auto use = [&all, &unused](const QStringList& paths) {
        for (const QString& path : paths) {
            for (const QString& picture : matching(path, all)) {
                unused.remove(picture);
            }
        }
    };
    for (const QString& file : filesOf({"*.ui"})) {
        use(pathsOfForm(read(file)));
    }
    for (const QString& file : filesOf({"*.cpp", "*.h"})) {
        use(pathsOfSource(read(file)));
    }
    QStringList names = unused.values();
    names.sort();
    QVERIFY2(names.isEmpty(), qPrintable("nothing shows " + names.join(", ")));
}

void TestReferences::formsShowPicturesAtTheirOwnSize()
{
    QStringList wrong;
    int checked = 0;
    for (const QString& file : filesOf({"*.ui"})) {
        QDomDocument form;
        QString error;
        QVERIFY2(form.setContent(read(file), &error), qPrintable(file + ": " + error));
        const QDomNodeList widgets = form.elementsByTagName("widget");
        for (int i = 0; i < widgets.size(); ++i) {
            const QDomElement widget = widgets.at(i).toElement();
            const QString name = widget.attribute("name");
            QSize place = sizeOf(formProperty(widget, "geometry").firstChildElement("rect"));
            QStringList paths;
            for (const char* holder : {"pixmap", "icon"}) {
                QString text;
                QTextStream out(&text);
                formProperty(widget, holder).save(out, 0);
                paths << pathsOfForm(text);
            }
            const QDomElement iconSize = formProperty(widget, "iconSize");
            if (!iconSize.isNull()) {
                place = sizeOf(iconSize.firstChildElement("size"));
            }
            for (const QString& path : std::as_const(paths)) {
                const QSize size = QImageReader(path).size();
                // Zero-sized widgets show nothing, and pictures without a file are another function's.
                if (!isOurs(path) || place.isEmpty() || !size.isValid()) {
                    continue;
                }
                // The page keys' icon size is larger than the key; an icon is never enlarged, so the picture
                // has the key's size. The reset picture stands in a state of a preset key that never shows.
                // The two filter keys share their off picture with the wider phase key.
                const bool known = (name == "Key_prev_page" || name == "Key_next_page") ||
                                   (name == "key_preset1" && path.endsWith("/bal_btn_reset_p.png")) ||
                                   ((name == "key_high_pass" || name == "key_low_pass") &&
                                    path.startsWith(":/dual_icon/setup_btn_o"));
                ++checked;
                if (size != place && !known) {
                    wrong << QString("%1 %2: %3 is %4x%5, shown at %6x%7")
                                 .arg(file.mid(qstrlen(SOURCE_ROOT) + 1), name, path)
                                 .arg(size.width())
                                 .arg(size.height())
                                 .arg(place.width())
                                 .arg(place.height());
                }
            }
        }
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    QVERIFY(checked > 100);
}

QTEST_GUILESS_MAIN(TestReferences)
#include "tst_references.moc"
