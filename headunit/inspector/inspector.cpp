#include "headunit/inspector/inspector.h"

#include "headunit/inspector/journalpanel.h"
#include "headunit/inspector/responseplot.h"
#include "headunit/inspector/settingspanel.h"
#include "headunit/inspector/soundpanel.h"
#include "headunit/inspector/sourcepanel.h"
#include "headunit/inspector/unitpanel.h"

#include <QTabWidget>
#include <QVBoxLayout>

namespace headunit {

Inspector::Inspector(int height, SoundControl* sound)
    : m_panels(new QTabWidget(this))
    , m_unitPanel(new UnitPanel(m_panels))
{
    setObjectName(QStringLiteral("inspector"));
    setWindowTitle(tr("Inspector"));
    resize(560, height);
    // The unit's font is for arm's length; this one is read at a desk.
    QFont desk = font();
    desk.setPixelSize(13);
    setFont(desk);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_panels);
    m_panels->addTab(new JournalPanel(m_panels), tr("Journal"));
    m_panels->addTab(new SettingsPanel(m_panels), tr("Settings"));
    m_panels->addTab(m_unitPanel, tr("Unit"));
    if (sound) {
        m_panels->addTab(new SourcePanel(sound, m_panels), tr("Sources"));
        if (ResponsePlot* const plot = ResponsePlot::create(m_panels))
            m_panels->addTab(new SoundPanel(sound, plot, m_panels), tr("Sound"));
    }
}

} // namespace headunit
