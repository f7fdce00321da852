#pragma once

#include "common/export.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace cm {

/// The translator's language, for the host. Until one is set it is that of the environment (LC_ALL,
/// LC_MESSAGES, LANG, the first that is set), English when there is none or it has no texts. Thread: GUI.
class COMMON_EXPORT Language : public QObject
{
    Q_OBJECT
public:
    /// Never null; stays the library's.
    static Language* instance();

    /// Codes of all languages, English first.
    static QStringList codes();
    /// Name of a language in that language; empty for an unknown code.
    static QString nativeName(const QString& code);
    /// Ids that have a text, ascending.
    static QVector<int> textIds();

    /// The text of that id in the current language, in English where the current one lacks it, null where
    /// both do.
    static QString text(int id);

    /// One of codes().
    QString current() const;
    /// code: one of codes(); "zh" and locale names such as "de_DE.UTF-8" find their language. False and a log
    /// line when there is none, or its texts can't be loaded; the language then stays. Windows get a
    /// QEvent::LanguageChange after changed().
    bool setCurrent(const QString& code);

signals:
    /// Only when it is another language than before. code: current().
    void changed(const QString& code);

private:
    Language();
};

} // namespace cm
