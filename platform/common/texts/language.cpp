#include "platform/common/texts/language.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTranslator>

#include <algorithm>
#include <iterator>
#include <memory>

namespace cm {

namespace {

constexpr int englishIndex = 0;
constexpr int highestId = 4095; ///< ids lie below; far above the highest that is in use

struct Row
{
    const char* code;
    const char* nativeName;
};

// clang-format off
constexpr Row languages[] = {
    {"en",    "English"},
    {"de",    "Deutsch"},
    {"fr",    "Français"},
    {"es",    "Español"},
    {"ru",    "Русский"},
    {"ar",    "العربية"},
    {"zh_CN", "简体中文"},
    {"ja",    "日本語"},
};
// clang-format on
static_assert(std::size(languages) == 8, "a language is a row here and a file in ts/");

struct Texts
{
    QTranslator english;
    std::unique_ptr<QTranslator> other; ///< the current language's, when that isn't English
    int current = englishIndex;

    Texts() { load(english, englishIndex); }

    bool use(int index)
    {
        std::unique_ptr<QTranslator> loaded;
        if (index != englishIndex) {
            loaded = std::make_unique<QTranslator>();
            if (!load(*loaded, index))
                return false;
        }
        other = std::move(loaded);
        current = index;
        return true;
    }

    static bool load(QTranslator& translator, int index)
    {
        const QString file = QStringLiteral(":/audiosetting_texts/%1.qm").arg(languages[index].code);
        if (translator.load(file))
            return true;
        qCritical("Language: the texts of \"%s\" are missing (%s)", languages[index].code, qPrintable(file));
        return false;
    }
};

Texts& texts()
{
    static Texts all;
    return all;
}

/// Row of a code or a locale's name, -1 when there is none: "zh", "zh-CN" and "zh_CN.UTF-8" are all Chinese.
int indexOf(const QString& code)
{
    const QString name = code.section('.', 0, 0).section('@', 0, 0).replace('-', '_');
    const auto rowWhere = [](const auto& fits) {
        const auto row = std::find_if(std::begin(languages), std::end(languages), fits);
        return row == std::end(languages) ? -1 : static_cast<int>(row - languages);
    };
    const int exact = rowWhere(
        [&name](const Row& row) { return !name.compare(QLatin1String(row.code), Qt::CaseInsensitive); });
    if (exact >= 0)
        return exact;
    const QString language = name.section('_', 0, 0);
    return rowWhere([&language](const Row& row) {
        return !language.compare(QString(row.code).section('_', 0, 0), Qt::CaseInsensitive);
    });
}

/// What the environment asks for, by POSIX: the first of these that is set counts.
QString localeOfEnvironment()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

bool isPlainLocale(const QString& locale)
{
    const QString name = locale.section('.', 0, 0);
    return name.isEmpty() || name == QLatin1String("C") || name == QLatin1String("POSIX");
}

QString textIn(const QTranslator& translator, int id)
{
    return translator.translate("", QByteArray("txt_" + QByteArray::number(id)).constData());
}

} // namespace

QString Language::text(int id)
{
    instance(); // reads the environment when it is the first call
    Texts& all = texts();
    if (all.other) {
        const QString text = textIn(*all.other, id);
        if (!text.isNull())
            return text;
    }
    return textIn(all.english, id);
}

Language* Language::instance()
{
    static Language language;
    return &language;
}

Language::Language()
{
    const QString locale = localeOfEnvironment();
    if (isPlainLocale(locale))
        return;
    const int index = indexOf(locale);
    if (index < 0)
        qWarning("Language: there are no texts for the locale \"%s\"; they are English", qPrintable(locale));
    else
        texts().use(index); // nobody has seen another language yet, so nobody is told
}

QStringList Language::codes()
{
    QStringList all;
    for (const Row& row : languages)
        all.append(QString::fromLatin1(row.code));
    return all;
}

QString Language::nativeName(const QString& code)
{
    for (const Row& row : languages)
        if (code == QLatin1String(row.code))
            return QString::fromUtf8(row.nativeName);
    return {};
}

QVector<int> Language::textIds()
{
    // The files are the one list; English has them all.
    QVector<int> ids;
    for (int id = 0; id <= highestId; ++id)
        if (!textIn(texts().english, id).isNull())
            ids.append(id);
    return ids;
}

QString Language::current() const
{
    return QString::fromLatin1(languages[texts().current].code);
}

bool Language::setCurrent(const QString& code)
{
    const int index = indexOf(code);
    if (index < 0) {
        qWarning("Language: there are no texts for \"%s\"; it stays \"%s\"", qPrintable(code),
                 qPrintable(current()));
        return false;
    }
    Texts& all = texts();
    if (index == all.current)
        return true;
    if (!all.use(index))
        return false;
    emit changed(current());
    if (QCoreApplication* application = QCoreApplication::instance()) {
        QEvent event(QEvent::LanguageChange); // reaches every window, as with Qt's own translators
        QCoreApplication::sendEvent(application, &event);
    }
    return true;
}

} // namespace cm
