#include "headunit/inspector/unitpanel.h"

#include "headunit/shell/shell.h"

#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace headunit {

namespace {

constexpr int confirmMs = 3000;

QLabel* plainText(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

UnitPanel::UnitPanel(Shell* shell, QWidget* parent)
    : QWidget(parent)
    , m_shell(shell)
    , m_reset(new QPushButton(this))
{
    auto* power = new QPushButton(this);
    power->setObjectName(QStringLiteral("power"));
    const auto showPower = [=] { power->setText(shell->isPowered() ? tr("Switch off") : tr("Switch on")); };
    showPower();
    connect(power, &QPushButton::clicked, shell, [=] { shell->setPowered(!shell->isPowered()); });
    connect(shell, &Shell::powered, power, showPower);

    m_reset->setObjectName(QStringLiteral("factory_reset"));
    m_reset->setText(tr("Forget every setting"));
    connect(m_reset, &QPushButton::clicked, this, &UnitPanel::onResetClicked);

    const mem::SettingsStore* store = mem::SettingsStore::instance();
    auto* layout = new QFormLayout(this);
    layout->setVerticalSpacing(14);
    layout->addRow(tr("Language"), languageBox());
    layout->addRow(tr("Power"), power);
    layout->addRow(tr("Factory reset"), m_reset);
    layout->addRow(
        tr("Settings"),
        plainText(store->isDurable() ? store->path() : tr("in memory only, until the unit is left"), this));
    layout->addRow(tr("Applications"), plainText(applicationsText(), this));
}

UnitPanel::~UnitPanel() = default;

QWidget* UnitPanel::languageBox()
{
    auto* box = new QComboBox(this);
    box->setObjectName(QStringLiteral("language"));
    const QStringList codes = cm::Language::codes();
    for (const QString& code : codes)
        box->addItem(cm::Language::nativeName(code), code);
    const auto showCurrent = [box] {
        box->setCurrentIndex(box->findData(cm::Language::instance()->current()));
    };
    showCurrent();
    // "activated" is the user's doing only, so showing a change can't start another.
    connect(box, QOverload<int>::of(&QComboBox::activated), m_shell,
            [this, box](int row) { m_shell->setLanguage(box->itemData(row).toString()); });
    connect(cm::Language::instance(), &cm::Language::changed, box, showCurrent);
    return box;
}

QString UnitPanel::applicationsText() const
{
    QStringList lines;
    for (const PluginLoader::Loaded& loaded : m_shell->plugins().loaded())
        lines.append(loaded.file);
    for (const PluginLoader::Refused& refused : m_shell->plugins().refused()) {
        if (refused.reason != PluginLoader::refusal({})) // a platform library is no news
            lines.append(tr("%1 not loaded: %2").arg(refused.file, refused.reason));
    }
    return lines.join(QLatin1Char('\n'));
}

void UnitPanel::onResetClicked()
{
    // The first click arms the button for a moment, the second one is meant.
    if (!m_reset->property("armed").toBool()) {
        m_reset->setProperty("armed", true);
        m_reset->setText(tr("Click again to forget every setting"));
        QTimer::singleShot(confirmMs, m_reset, [this] {
            m_reset->setProperty("armed", false);
            m_reset->setText(tr("Forget every setting"));
        });
        return;
    }
    m_shell->resetToFactory();
}

} // namespace headunit
