#include "headunit/shell/unitlanguage.h"

#include "common/settings.h"
#include "common/settingstable.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"

#include <QLocale>

namespace headunit {

namespace {

constexpr mem::Setting languageSetting = mem::settingOf("Headunit_Language");

/// The unit's language that fits a locale; empty when it has none.
QString fitting(const QLocale& locale)
{
    const QStringList codes = cm::Language::codes();
    for (const QString& code : codes) {
        if (locale.name() == code || QLocale(code).language() == locale.language())
            return code;
    }
    return QString();
}

} // namespace

void chooseLanguage(const QString& asked)
{
    QString code = asked;
    if (code.isEmpty())
        code = mem::SettingsFunc::instance()->getValue(mem::keyOf(languageSetting),
                                                       QString::fromLatin1(languageSetting.defaultText));
    if (!cm::Language::codes().contains(code))
        code = fitting(QLocale::system());
    cm::Language::instance()->setCurrent(code.isEmpty() ? QStringLiteral("en") : code);
}

void keepLanguage()
{
    mem::SettingsStore::instance()->setValue(mem::keyOf(languageSetting), cm::Language::instance()->current(),
                                             true);
}

} // namespace headunit
