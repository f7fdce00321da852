#pragma once

#include "common/export.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace cm {

/// The translator's language, for the host. Thread: GUI.
class COMMON_EXPORT Language : public QObject
{
    Q_OBJECT
public:
    static Language* instance();

    /// Codes of all languages, English first: en de fr es ru ar zh_CN ja.
    static QStringList codes();
    /// Name of a language in that language; empty for an unknown code.
    static QString nativeName(const QString& code);
    /// Ids that have a text, ascending.
    static QVector<int> textIds();

    QString current() const;
    /// code: one of codes(); "zh" and locale names such as "de_DE.UTF-8" find their language. False and a log
    /// line when there is none.
    bool setCurrent(const QString& code);

signals:
    void changed(const QString& code);

private:
    Language();
    ~Language() override;
    Q_DISABLE_COPY(Language)
};

} // namespace cm
