#include "M5QX/pasetuptogglekey.h"

#include "M5QX/diagnostic.h"

#include <QIcon>
#include <QLabel>
#include <QPushButton>

namespace {

constexpr char onImage[] = ":/dual_icon/setup_btn_on_p.png";
constexpr char onImageStyle1[] = ":/vexa_m5qx_audiosettingicon/eq_btn_on1_n.png";
constexpr char offImage[] = ":/dual_icon/setup_btn_off_n.png";

} // namespace

PaSetupToggleKey::PaSetupToggleKey(QPushButton* key, QLabel* label, const QString& onText,
                                   const QString& offText)
    : m_key(key)
    , m_label(label)
    , m_onText(onText)
    , m_offText(offText)
{
}

PaSetupToggleKey::PaSetupToggleKey(QPushButton* key)
    : PaSetupToggleKey(key, nullptr, QString(), QString())
{
}

void PaSetupToggleKey::showToggleKey(bool on, int style)
{
    if (on)
        show(style == 1 ? onImageStyle1 : onImage, m_onText);
    else
        show(offImage, m_offText);
}

void PaSetupToggleKey::showToggleSWKey(bool on)
{
    show(on ? onImage : offImage, on ? m_onText : m_offText);
}

void PaSetupToggleKey::setLabelsString(const QString& onText, const QString& offText)
{
    m_onText = onText;
    m_offText = offText;
}

void PaSetupToggleKey::show(const char* image, const QString& text)
{
    if (m_label)
        m_label->setText(text);
    // One picture for every mode: what is pressed or disabled is the style's affair.
    QIcon icon;
    icon.addFile(QLatin1String(image), QSize(), QIcon::Normal, QIcon::Off);
    m_key->setIcon(icon);
}
