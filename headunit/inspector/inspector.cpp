#include "headunit/inspector/inspector.h"

#include "headunit/inspector/journalpanel.h"
#include "headunit/inspector/settingspanel.h"
#include "headunit/inspector/soundpanel.h"
#include "headunit/inspector/sourcepanel.h"
#include "headunit/inspector/unitpanel.h"
#include "headunit/shell/shell.h"

#include <QTabWidget>
#include <QVBoxLayout>

namespace headunit {

Inspector::Inspector(Shell* shell)
    : m_panels(new QTabWidget(this))
{
    setObjectName(QStringLiteral("inspector"));
    setWindowTitle(tr("Inspector"));
    resize(560, shell->unit()->height());
    // The unit's font is for arm's length; this one is read at a desk.
    QFont desk = font();
    desk.setPixelSize(13);
    setFont(desk);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_panels);
    m_panels->addTab(new JournalPanel(m_panels), tr("Journal"));
    m_panels->addTab(new SettingsPanel(m_panels), tr("Settings"));
    m_panels->addTab(new UnitPanel(shell, m_panels), tr("Unit"));
    if (shell->sound()) {
        m_panels->addTab(new SourcePanel(shell->sound(), m_panels), tr("Sources"));
        m_panels->addTab(new SoundPanel(shell->sound(), m_panels), tr("Sound"));
    }
}

Inspector::~Inspector() = default;

} // namespace headunit
