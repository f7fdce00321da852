#include "common/translator.h"

#include "platform/common/texts/language.h"

#include <QSet>

QString Translator::translate(int id)
{
    const QString text = cm::Language::text(id);
    if (!text.isNull())
        return text;
    static QSet<int> told;
    if (!told.contains(id)) {
        told.insert(id);
        qWarning("Translator: no text has the id %d; its number is shown", id);
    }
    return QString::number(id);
}

namespace cm {

// clang-format off
const int eqNameStrId[9] = {
    1226, // flat
    237,  // R&B
    239,  // rock
    238,  // pop
    240,  // hip-hop
    246,  // jazz
    1258, // user 1
    1259, // user 2
    1226, // has no curve of its own and is drawn flat
};
// clang-format on

} // namespace cm
