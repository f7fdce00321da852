#include "common/translator.h"

#include "hvaudio/eqcurves.h"
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

using hvaudio::eqCurveOf;

const int eqNameStrId[9] = {eqCurveOf(0).nameId, eqCurveOf(1).nameId, eqCurveOf(2).nameId,
                            eqCurveOf(3).nameId, eqCurveOf(4).nameId, eqCurveOf(5).nameId,
                            eqCurveOf(6).nameId, eqCurveOf(7).nameId, eqCurveOf(8).nameId};

} // namespace cm
