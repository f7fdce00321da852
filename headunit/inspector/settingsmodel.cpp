#include "headunit/inspector/settingsmodel.h"

#include "platform/common/settings/settingsstore.h"

#include <QBrush>
#include <QGuiApplication>
#include <QMap>
#include <QPalette>

#include <algorithm>

namespace headunit {

namespace {

struct KnownKey
{
    const char* key; ///< "%1" stands for first ... first + count - 1
    QVariant::Type type;
    int count = 0; ///< 0: the key as it is
};

// The keys that the applications and the audio service use; which value absence means is theirs to know.
// clang-format off
const KnownKey knownKeys[] = {
    {"AudioSetting_Page",                  QVariant::Int},
    {"customloudnes",                      QVariant::Bool},
    {"subwooferOnOff",                     QVariant::Bool},
    {"subwooferLevel",                     QVariant::Int},
    {"subwooferFreq",                      QVariant::Int},
    {"subwooferslope",                     QVariant::Int},
    {"lpfState",                           QVariant::Bool},
    {"lpfFreq",                            QVariant::Int},
    {"lpfslope",                           QVariant::Int},
    {"hpfState",                           QVariant::Bool},
    {"hpfFreq",                            QVariant::Int},
    {"hpfslope",                           QVariant::Int},
    {"settings_cross_filter",              QVariant::Int},
    {"settings_cross_freq_index",          QVariant::String},
    {"settings_cross_gain_index",          QVariant::String},
    {"settings_cross_slope_index",         QVariant::String},
    {"Audio_Phase_Troggle",                QVariant::Bool},
    {"eq1%1",                              QVariant::Int, 13},
    {"eq2%1",                              QVariant::Int, 13},
    {"Audio_Time_Alignment_Num1%1",        QVariant::Int, 5},
    {"Audio_Time_Alignment_Num2%1",        QVariant::Int, 5},
    {"Audio_Time_Alignment_Num3%1",        QVariant::Int, 5},
    {"Audio_Time_Alignment_Preset",        QVariant::Int},
    {"volume%1",                           QVariant::Int, 6},
    {"Setup_Main_Volume",                  QVariant::Int},
    {"Setup_Volume_Type_BT_Ringer",        QVariant::Int},
    {"Setup_Volume_Type_BT_Talking",       QVariant::Int},
    {"Setup_Volume_Type_Navi",             QVariant::Int},
    {"Setup_Volume_Type_Voice",            QVariant::Int},
    {"Setup_Input_Gain_Type_Radio",        QVariant::Int},
    {"Setup_Input_Gain_Type_USB",          QVariant::Int},
    {"Setup_Input_Gain_Type_BT_Audio",     QVariant::Int},
    {"Setup_Input_Gain_Type_AUX",          QVariant::Int},
    {"Setup_Input_Gain_Type_Carplay",      QVariant::Int},
    {"Setup_Input_Gain_Type_Android_Auto", QVariant::Int},
    {"Setup_Input_Gain_Type_DAB",          QVariant::Int},
};
// clang-format on
static_assert(sizeof(knownKeys) / sizeof(knownKeys[0]) == 36, "one row a key");

const QMap<QString, QVariant::Type>& knownTypes()
{
    static const QMap<QString, QVariant::Type> types = [] {
        QMap<QString, QVariant::Type> all;
        for (const KnownKey& row : knownKeys) {
            const QString key = QLatin1String(row.key);
            if (row.count == 0)
                all.insert(key, row.type);
            for (int i = 0; i < row.count; ++i)
                all.insert(key.arg(i), row.type);
        }
        return all;
    }();
    return types;
}

QString typeName(QVariant::Type type)
{
    return type == QVariant::String ? QStringLiteral("string") : QLatin1String(QVariant::typeToName(type));
}

} // namespace

SettingsModel::SettingsModel(QObject* parent)
    : QAbstractTableModel(parent)
{
    QMap<QString, bool> keys;
    const QMap<QString, QVariant> values = mem::SettingsStore::instance()->values();
    for (auto it = knownTypes().cbegin(); it != knownTypes().cend(); ++it)
        keys.insert(it.key(), true);
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        keys.insert(it.key(), true);
    m_keys = keys.keys();
    connect(mem::SettingsStore::instance(), &mem::SettingsStore::valueChanged, this,
            &SettingsModel::onValueChanged);
}

SettingsModel::~SettingsModel() = default;

int SettingsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_keys.size();
}

int SettingsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant::Type SettingsModel::typeOf(const QString& key) const
{
    const QVariant value = mem::SettingsStore::instance()->value(key);
    return value.isValid() ? value.type() : knownTypes().value(key, QVariant::String);
}

QVariant SettingsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const QString key = m_keys.at(index.row());
    const QVariant value = mem::SettingsStore::instance()->value(key);
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == Key)
            return key;
        if (index.column() == Type)
            return typeName(typeOf(key));
        return value.isValid() ? value.toString() : tr("not set");
    case Qt::EditRole:
        if (index.column() != Value)
            return data(index, Qt::DisplayRole);
        return value.isValid() ? value : QVariant(typeOf(key));
    case Qt::ForegroundRole:
        if (!value.isValid())
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant SettingsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case Key:
        return tr("Key");
    case Type:
        return tr("Type");
    case Value:
        return tr("Value");
    default:
        return QVariant();
    }
}

Qt::ItemFlags SettingsModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.column() == Value ? flags | Qt::ItemIsEditable : flags;
}

bool SettingsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != Value || role != Qt::EditRole)
        return false;
    const QString key = m_keys.at(index.row());
    QVariant typed = value;
    if (!typed.convert(int(typeOf(key)))) // says false for "abc" as a number, too
        return false;
    return mem::SettingsStore::instance()->edit(key, typed);
}

void SettingsModel::unset(const QModelIndex& index)
{
    if (index.isValid())
        mem::SettingsStore::instance()->edit(m_keys.at(index.row()), QVariant());
}

int SettingsModel::rowOf(const QString& key) const
{
    const auto it = std::lower_bound(m_keys.cbegin(), m_keys.cend(), key);
    return it != m_keys.cend() && *it == key ? int(it - m_keys.cbegin()) : -1;
}

void SettingsModel::onValueChanged(const QString& key, const QVariant& value)
{
    int row = rowOf(key);
    if (row >= 0 && !value.isValid() && !knownTypes().contains(key)) {
        beginRemoveRows(QModelIndex(), row, row);
        m_keys.removeAt(row);
        endRemoveRows();
    } else if (row >= 0) {
        emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    } else if (value.isValid()) {
        row = int(std::lower_bound(m_keys.cbegin(), m_keys.cend(), key) - m_keys.cbegin());
        beginInsertRows(QModelIndex(), row, row);
        m_keys.insert(row, key);
        endInsertRows();
    }
}

} // namespace headunit
