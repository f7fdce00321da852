#include "headunit/inspector/unitpanel.h"

#include "common/translator.h"
#include "headunit/front/statusbar.h"
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

UnitPanel::UnitPanel(QWidget* parent)
    : QWidget(parent)
    , m_power(new QPushButton(this))
    , m_reset(new QPushButton(this))
    , m_store(plainText(QString(), this))
    , m_applications(plainText(QString(), this))
{
    m_power->setObjectName(QStringLiteral("power"));
    showPowered(true);
    connect(m_power, &QPushButton::clicked, this, [this] { emit powerChosen(!m_powered); });

    m_reset->setObjectName(QStringLiteral("factory_reset"));
    m_reset->setText(tr("Forget every setting"));
    connect(m_reset, &QPushButton::clicked, this, &UnitPanel::onResetClicked);

    m_store->setObjectName(QStringLiteral("store"));
    showStore();
    connect(mem::SettingsStore::instance(), &mem::SettingsStore::durableChanged, this, &UnitPanel::showStore);
    connect(cm::Language::instance(), &cm::Language::changed, this, &UnitPanel::showStore);

    auto* layout = new QFormLayout(this);
    layout->setVerticalSpacing(14);
    layout->addRow(tr("Language"), languageBox());
    layout->addRow(tr("Power"), m_power);
    layout->addRow(tr("Factory reset"), m_reset);
    layout->addRow(tr("Settings"), m_store);
    layout->addRow(tr("Applications"), m_applications);
}

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
    connect(box, QOverload<int>::of(&QComboBox::activated), this,
            [this, box](int row) { emit languageChosen(box->itemData(row).toString()); });
    connect(cm::Language::instance(), &cm::Language::changed, box, showCurrent);
    return box;
}

void UnitPanel::showStore()
{
    const mem::SettingsStore* store = mem::SettingsStore::instance();
    m_store->setText(
        store->isDurable()
            ? store->path()
            : QStringLiteral("%1: %2").arg(Translator::translate(StatusBar::notKeptText), store->problem()));
}

void UnitPanel::showEvent(QShowEvent* event)
{
    showStore(); // why nothing is kept may have become another reason
    QWidget::showEvent(event);
}

void UnitPanel::showPowered(bool on)
{
    m_powered = on;
    m_power->setText(on ? tr("Switch off") : tr("Switch on"));
}

void UnitPanel::showApplications(const QStringList& lines)
{
    m_applications->setText(lines.join(QLatin1Char('\n')));
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
    emit factoryResetChosen();
}

} // namespace headunit
