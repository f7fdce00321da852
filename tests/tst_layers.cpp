// The rules of the house: who may include whom, how many units a folder holds, and idioms that no compiler
// knows. Each rule is tried on a tree with a fault, too.

#include <QtTest>

namespace {

/// Every file of a tree, by its path from the root: its text, empty for what is no source of ours.
using Tree = QMap<QString, QString>;

bool isSource(const QString& path)
{
    return path.endsWith(QLatin1String(".h")) || path.endsWith(QLatin1String(".cpp"));
}

QString folderOf(const QString& path)
{
    return path.left(qMax(0, path.lastIndexOf('/')));
}

/// A header, its implementation and its form are one unit.
QString unitOf(const QString& path)
{
    const int name = path.lastIndexOf('/') + 1;
    const int end = path.indexOf('.', name + 1);
    return end < 0 ? path : path.left(end);
}

bool isWithin(const QString& path, const QString& folder)
{
    return path == folder || path.startsWith(folder + '/');
}

Tree readTree()
{
    const QDir root(QStringLiteral(SOURCE_ROOT));
    Tree tree;
    QDirIterator files(root.path(), QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = root.relativeFilePath(files.next());
        if (isWithin(path, QStringLiteral("build")) || isWithin(path, QStringLiteral(".git")))
            continue;
        QFile file(files.filePath());
        tree.insert(path, isSource(path) && file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll())
                                                                           : QString());
    }
    return tree;
}

struct Include
{
    QString file;
    bool angled;
};

QVector<Include> includesOf(const QString& text)
{
    static const QRegularExpression line(QStringLiteral("^#include ([\"<])([^\">]+)[\">]"),
                                         QRegularExpression::MultilineOption);
    QVector<Include> found;
    for (auto matches = line.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        found.append({match.captured(2), match.captured(1) == QLatin1String("<")});
    }
    return found;
}

/// Code generators make these.
bool isGenerated(const QString& include)
{
    return include.endsWith(QLatin1String(".moc")) || include.startsWith(QLatin1String("ui_"));
}

/// The file of the tree that an include in quotes means; an empty string when there is none.
QString resolved(const Tree& tree, const QString& include)
{
    for (const char* from : {"platform/interface/", ""}) {
        if (tree.contains(QLatin1String(from) + include))
            return QLatin1String(from) + include;
    }
    return QString();
}

/// What the files of a folder may include of this tree beside their own folder and those below it. The
/// longest folder counts; tests, benchmarks and examples, which stand in no row, may include anything.
struct Layer
{
    const char* folder;
    std::initializer_list<const char*> mayInclude;
    bool mayIncludeQt = true;
};

// clang-format off
const Layer layers[] = {
    {"platform/interface",      {}},
    {"platform/hvaudio",        {}, false},
    {"platform/icons",          {}},
    {"platform/common",         {"platform/interface"}},
    {"platform/hvaudioservice", {"platform/interface", "platform/common", "platform/hvaudio/dsp/settings.h"}}, // what it hands on
    {"M5QX",                    {"platform/interface"}},
    {"mainwindow",              {"platform/interface", "M5QX"}},
    {"soundcheck",              {"platform/interface"}},
    {"headunit",                {"platform/interface", "platform/common", "platform/hvaudioservice", "platform/icons"}},
    {"headunit/remote",         {"headunit/front"}}, // windows and what is done to them, nothing of the unit's state
    {"headunit/sound",          {"platform/interface", "platform/common", "platform/hvaudioservice", "platform/hvaudio", "headunit"}},
    {"headunit/cli",            {"platform/interface", "platform/common", "platform/hvaudioservice", "platform/hvaudio", "headunit"}},
};
// clang-format on

const Layer* layerOf(const QString& path)
{
    const Layer* found = nullptr;
    for (const Layer& layer : layers) {
        if (isWithin(path, QLatin1String(layer.folder)) &&
            (!found || qstrlen(layer.folder) > qstrlen(found->folder)))
            found = &layer;
    }
    return found;
}

QStringList arrowFaults(const Tree& tree)
{
    QStringList faults;
    for (auto file = tree.begin(); file != tree.end(); ++file) {
        const Layer* layer = layerOf(file.key());
        for (const Include& include : includesOf(*file)) {
            const QString fault = file.key() + QLatin1String(" includes ") + include.file;
            if (include.angled) {
                if (layer && !layer->mayIncludeQt && include.file.startsWith('Q'))
                    faults << fault;
                continue;
            }
            if (isGenerated(include.file))
                continue;
            const QString target = resolved(tree, include.file);
            if (target.isEmpty())
                faults << fault + QLatin1String(", which is nowhere");
            if (!layer || target.isEmpty() || isWithin(target, QLatin1String(layer->folder)))
                continue;
            bool may = false;
            for (const char* folder : layer->mayInclude) {
                // A part of a folder with a row of its own, like headunit/sound, is as open as the whole.
                may = may || isWithin(target, QLatin1String(folder));
            }
            if (!may)
                faults << fault;
        }
    }
    return faults;
}

using Graph = QMap<QString, QSet<QString>>;

/// Which node includes which other, files being nodes by folder or by unit.
Graph graphOf(const Tree& tree, QString (*node)(const QString&))
{
    Graph graph;
    for (auto file = tree.begin(); file != tree.end(); ++file) {
        for (const Include& include : includesOf(*file)) {
            const QString target = include.angled ? QString() : resolved(tree, include.file);
            if (!target.isEmpty() && node(target) != node(file.key()))
                graph[node(file.key())].insert(node(target));
        }
    }
    return graph;
}

/// A folder and one within it are one: what stands at a library's root may hold it together and serve its
/// parts.
QStringList folderCircles(const Tree& tree)
{
    Graph graph = graphOf(tree, folderOf);
    for (auto from = graph.begin(); from != graph.end(); ++from) {
        for (auto to = from->begin(); to != from->end();)
            to = isWithin(*to, from.key()) || isWithin(from.key(), *to) ? from->erase(to) : std::next(to);
    }
    QStringList found;
    QSet<QString> named;
    for (const QString& start : graph.keys()) {
        QMap<QString, QString> cameFrom;
        QStringList open{start};
        while (!open.isEmpty() && !cameFrom.contains(start)) {
            const QString node = open.takeFirst();
            for (const QString& next : graph.value(node)) {
                if (cameFrom.contains(next))
                    continue;
                cameFrom.insert(next, node);
                open << next;
            }
        }
        if (!cameFrom.contains(start) || named.contains(start))
            continue;
        QStringList way{start};
        do {
            way.prepend(cameFrom.value(way.first()));
            named.insert(way.first());
        } while (way.first() != start);
        found << way.join(QLatin1String(" -> "));
    }
    return found;
}

QStringList unitsThatIncludeEachOther(const Tree& tree)
{
    const Graph graph = graphOf(tree, unitOf);
    QStringList found;
    for (auto from = graph.begin(); from != graph.end(); ++from) {
        for (const QString& to : *from) {
            if (from.key() < to && graph.value(to).contains(from.key()))
                found << from.key() + QLatin1String(" <-> ") + to;
        }
    }
    return found;
}

constexpr int unitsAllowed = 20;

QStringList crowdedFolders(const Tree& tree)
{
    QMap<QString, QSet<QString>> units;
    for (const QString& path : tree.keys()) {
        // What tools read is no unit.
        if (!path.endsWith(QLatin1String("CMakeLists.txt")) && !path.contains(QLatin1String("/.")))
            units[folderOf(path)].insert(unitOf(path));
    }
    QStringList faults;
    for (auto folder = units.begin(); folder != units.end(); ++folder) {
        if (folder->size() > unitsAllowed)
            faults << QStringLiteral("%1 holds %2 units").arg(folder.key()).arg(folder->size());
    }
    return faults;
}

/// A file that includes its own header first shows that the header compiles alone, where nothing is
/// precompiled.
QStringList ownHeadersNotFirst(const Tree& tree)
{
    QStringList faults;
    for (auto file = tree.begin(); file != tree.end(); ++file) {
        const QString own = unitOf(file.key()).section('/', -1) + QLatin1String(".h");
        const QVector<Include> includes = includesOf(*file);
        for (int n = 1; n < includes.size() && file.key().endsWith(QLatin1String(".cpp")); ++n) {
            if (!includes.at(n).angled && includes.at(n).file.section('/', -1) == own)
                faults << file.key();
        }
    }
    return faults;
}

/// What must not be written, and the one file that may.
struct Unwanted
{
    const char* within; ///< the folder; empty: everywhere
    const char* pattern;
    const char* wanted;
    const char* except;
};

const Unwanted unwanted[] = {
    // clang-format off
    {"",      "(?<![.>\\w])kill\\((?!\\))",                               "sendSignal(), which is for one process", "tests/support/process.h"},
    {"tests", "QRandomGenerator::(global|system)|random_device",           "RandomWalk::seed(), which can be given", "tests/support/randomwalk.cpp"},
    {"",      "sizeof\\(?\\s*(\\w+)\\)?\\s*/\\s*sizeof\\(?\\s*(\\*\\s*)?\\1\\b", "std::size()",                            ""},
    {"",      "\\bdelete ui\\b",                                           "QScopedPointer<Ui::...>",                ""},
    {"",      "\\bconst(expr)? [^;=()]*\\b(k[A-Z]\\w*|[A-Z][A-Z_\\d]*[A-Z\\d])(\\[[^;=]*)? ?[={]", "a lowerCamelCase name", ""},
    // clang-format on
};

QStringList unwantedLines(const Tree& tree)
{
    QStringList faults;
    for (const Unwanted& row : unwanted) {
        const QRegularExpression pattern(QLatin1String(row.pattern));
        for (auto file = tree.begin(); file != tree.end(); ++file) {
            if (file.key() != QLatin1String(row.except) && file.key().startsWith(QLatin1String(row.within)) &&
                !file.key().endsWith(QLatin1String("tst_layers.cpp")) && pattern.match(*file).hasMatch())
                faults << QStringLiteral("%1: \"%2\"; wanted: %3")
                              .arg(file.key(), pattern.match(*file).captured(), QLatin1String(row.wanted));
        }
    }
    return faults;
}

using Rule = QStringList (*)(const Tree&);

} // namespace

Q_DECLARE_METATYPE(Tree)
Q_DECLARE_METATYPE(Rule)

class TestLayers : public QObject
{
    Q_OBJECT
private slots:
    void ruleHolds_data();
    void ruleHolds();
    void faultIsFound_data();
    void faultIsFound();
};

void TestLayers::ruleHolds_data()
{
    QTest::addColumn<Rule>("rule");
    QTest::newRow("includes follow the layers") << Rule(arrowFaults);
    QTest::newRow("no circle between folders") << Rule(folderCircles);
    QTest::newRow("no two units include each other") << Rule(unitsThatIncludeEachOther);
    QTest::newRow("no crowded folder") << Rule(crowdedFolders);
    QTest::newRow("own header first") << Rule(ownHeadersNotFirst);
    QTest::newRow("nothing unwanted") << Rule(unwantedLines);
}

void TestLayers::ruleHolds()
{
    QFETCH(Rule, rule);
    static const Tree tree = readTree();
    QVERIFY2(tree.contains(QStringLiteral("M5QX/m5qx_mainwidget.cpp")), "the tree was not read");
    const QStringList faults = rule(tree);
    QVERIFY2(faults.isEmpty(), qPrintable('\n' + faults.join('\n')));
}

void TestLayers::faultIsFound_data()
{
    QTest::addColumn<Rule>("rule");
    QTest::addColumn<Tree>("tree");
    const Tree sound{{"platform/interface/common/a.h", ""},
                     {"platform/common/b.h", "#include \"common/a.h\"\n"},
                     {"platform/common/b.cpp", "#include \"platform/common/b.h\"\n#include <QObject>\n"},
                     {"platform/hvaudio/c.h", "#include <vector>\n"},
                     {"headunit/sound/d.h", "#include \"platform/hvaudio/c.h\"\n"},
                     {"headunit/front/e.h", "#include \"headunit/sound/d.h\"\n"},
                     {"M5QX/f.h", ""}};
    const auto with = [sound](const char* path, const char* text) {
        Tree tree = sound;
        tree.insert(QLatin1String(path), QLatin1String(text));
        return tree;
    };
    // clang-format off
    QTest::newRow("plug-in includes an implementation") << Rule(arrowFaults) << with("M5QX/f.h", "#include \"platform/common/b.h\"\n");
    QTest::newRow("shell includes the plug-in") << Rule(arrowFaults) << with("headunit/shell/g.cpp", "#include \"M5QX/f.h\"\n");
    QTest::newRow("processor from the front") << Rule(arrowFaults) << with("headunit/front/e.h", "#include \"platform/hvaudio/c.h\"\n");
    QTest::newRow("processor includes Qt") << Rule(arrowFaults) << with("platform/hvaudio/c.h", "#include <QString>\n");
    QTest::newRow("processor includes what is above") << Rule(arrowFaults) << with("platform/hvaudio/c.h", "#include \"common/a.h\"\n");
    QTest::newRow("service includes the processor") << Rule(arrowFaults) << with("platform/hvaudioservice/g.h", "#include \"platform/hvaudio/c.h\"\n");
    QTest::newRow("second application includes the service") << Rule(arrowFaults) << with("soundcheck/g.h", "#include \"platform/common/b.h\"\n");
    QTest::newRow("browser includes the settings") << Rule(arrowFaults) << with("headunit/remote/g.cpp", "#include \"platform/common/b.h\"\n");
    QTest::newRow("include of nothing") << Rule(arrowFaults) << with("tests/g.cpp", "#include \"platform/common/x.h\"\n");
    QTest::newRow("circle of folders") << Rule(folderCircles) << with("headunit/sound/g.h", "#include \"headunit/front/e.h\"\n");
    QTest::newRow("two units that include each other") << Rule(unitsThatIncludeEachOther) << with("headunit/sound/d.cpp", "#include \"headunit/front/e.h\"\n");
    QTest::newRow("own header second") << Rule(ownHeadersNotFirst) << with("platform/common/b.cpp", "#include \"common/a.h\"\n#include \"platform/common/b.h\"\n");
    QTest::newRow("kill") << Rule(unwantedLines) << with("tests/g.cpp", "    ::kill(process.processId(), SIGKILL);\n");
    QTest::newRow("chance") << Rule(unwantedLines) << with("tests/g.cpp", "QRandomGenerator::global()->generate();\n");
    QTest::newRow("count by division") << Rule(unwantedLines) << with("tests/g.cpp", "int n = sizeof(rows) / sizeof(rows[0]);\n");
    QTest::newRow("form deleted by hand") << Rule(unwantedLines) << with("M5QX/f.cpp", "    delete ui;\n");
    QTest::newRow("constant with a k") << Rule(unwantedLines) << with("tests/g.cpp", "constexpr int kRows = 3;\n");
    QTest::newRow("constant in capitals") << Rule(unwantedLines) << with("tests/g.cpp", "static const char* const ROW_NAMES[] = {\"a\"};\n");
    // clang-format on
    Tree crowd = sound;
    for (int unit = 0; unit < 20; ++unit)
        crowd.insert(QStringLiteral("M5QX/page%1.cpp").arg(unit), QString());
    QTest::newRow("twenty-one units") << Rule(crowdedFolders) << crowd;

    for (const Rule rule : {arrowFaults, folderCircles, unitsThatIncludeEachOther, crowdedFolders,
                            ownHeadersNotFirst, unwantedLines})
        QVERIFY2(rule(sound).isEmpty(), qPrintable(rule(sound).join('\n')));
}

void TestLayers::faultIsFound()
{
    QFETCH(Rule, rule);
    QFETCH(Tree, tree);
    QCOMPARE(rule(tree).size(), 1);
}

QTEST_GUILESS_MAIN(TestLayers)
#include "tst_layers.moc"
