#include "headunit/shell/shell.h"

#include "headunit/front/launcher.h"
#include "headunit/front/screen.h"
#include "headunit/inspector/inspector.h"
#include "headunit/inspector/unitpanel.h"
#include "headunit/shell/audiopages.h"
#include "headunit/shell/seam.h"
#include "headunit/shell/startuptrace.h"
#include "headunit/shell/unitlanguage.h"
#include "headunit/shell/windowhost.h"
#include "headunit/sound/soundcontrol.h"
#include "headunit/sound/soundnames.h"
#include "headunit/sound/storedsources.h"

#include "common/appplugin.h"
#include "common/windowinterface.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>

namespace headunit {

Shell::Shell(bool withFront, SoundControl* sound)
    : m_sound(sound)
{
    restoreSources();
    hvaudio::AudioServiceHost::powerOn();
    m_volume.reload();
    m_unit.reset(new UnitWindow(&m_volume, withFront));
    connect(m_unit.data(), &UnitWindow::hardKey, this, &Shell::onHardKey);
    Launcher* launcher = m_unit->screen()->launcher();
    connect(launcher, &Launcher::chosen, this, &Shell::openWindow);
    connect(launcher, &Launcher::tryAgainChosen, this, &Shell::tryAgain);
    for (const Retry& retry : std::as_const(m_retries)) // of sources
        launcher->addRetryTile(retry.what, retry.name());
    connect(&m_events, &FrameworkEvents::backRequested, this, &Shell::leaveApplication);
    connect(&m_events, &FrameworkEvents::statusBarHideRequested, this, &Shell::onStatusBarHideRequested);
    connect(cm::Language::instance(), &cm::Language::changed, this, &Shell::onLanguageChanged);
    // Later, when the owner of the setting has it and the editor that it was typed into is done.
    connect(mem::SettingsStore::instance(), &mem::SettingsStore::edited, this, &Shell::onSettingEdited,
            Qt::QueuedConnection);
    // The audio settings note each page that they show.
    connect(mem::SettingsStore::instance(), &mem::SettingsStore::written, this, [this](const QString& key) {
        if (key == mem::keyOf(audioPageSetting))
            m_lookedAt = -1;
    });
    auto* shortcut = new QShortcut(QKeySequence(Qt::Key_F12), m_unit.data());
    shortcut->setContext(Qt::ApplicationShortcut);
    connect(shortcut, &QShortcut::activated, this, &Shell::toggleInspector);
}

Shell::~Shell()
{
    shutDown();
}

int Shell::loadApplications(const QString& folder)
{
    const QStringList files = m_plugins.find(folder);
    for (const QString& file : files)
        startApplication(file);
    StartupTrace::reached("plugins-loaded");
    return m_hosts.size();
}

void Shell::startApplication(const QString& path)
{
    const QString file = QFileInfo(path).fileName();
    bool up = false;
    if (m_mark.begin(file)) {
        AppPlugin* plugin = m_plugins.load(path);
        up = plugin && callAcrossSeam(file, [&] { addWindowsOf(file, plugin); });
        m_mark.end();
    } else {
        qWarning("%s is left out this time: the unit went down while it was started", qPrintable(file));
    }
    if (!up)
        offerRetry(
            file, [file] { return file; }, [this, path] { startApplication(path); });
}

void Shell::addWindowsOf(const QString& file, AppPlugin* plugin)
{
    const QList<int> ids = plugin->windowInterfaceID();
    for (const int id : ids) {
        if (WindowInterface* window = plugin->requestWindowInterface(id))
            addWindow(id, window);
        else
            qWarning("%s offers window %d and doesn't hand it out", qPrintable(file), id);
    }
}

void Shell::offerRetry(const QString& what, const std::function<QString()>& name,
                       const std::function<void()>& again)
{
    m_retries.append({what, name, again});
    if (m_unit)
        m_unit->screen()->launcher()->addRetryTile(what, name());
}

void Shell::tryAgain(const QString& what)
{
    for (int i = 0; i < m_retries.size(); ++i) {
        if (m_retries[i].what == what) {
            m_retries.takeAt(i).again();
            return;
        }
    }
}

void Shell::addWindow(int id, WindowInterface* window)
{
    if (host(id)) {
        qWarning("window %d is there already (\"%s\")", id, qPrintable(host(id)->name()));
        return;
    }
    auto* added = new WindowHost(id, window, m_unit->screen()->applicationArea(), this);
    connect(added, &WindowHost::rootVanished, this, &Shell::leaveApplication, Qt::QueuedConnection);
    m_hosts.append(added);
    m_unit->screen()->launcher()->addTile(id, added->name(),
                                          id == audioWindowId ? LauncherTile::Picture::Equalizer
                                                              : LauncherTile::Picture::FirstLetter);
}

WindowHost* Shell::host(int windowId) const
{
    for (WindowHost* candidate : m_hosts) {
        if (candidate->id() == windowId)
            return candidate;
    }
    return nullptr;
}

bool Shell::openWindow(int id)
{
    WindowHost* wanted = host(id);
    if (!wanted || !m_powered) {
        qWarning("window %d can't be opened: %s", id,
                 m_powered ? "no application offers it" : "the unit is off");
        return false;
    }
    if (m_front == wanted)
        return true;
    leaveApplication();
    StartupTrace::reached("window-opening");
    Screen* screen = m_unit->screen();
    screen->showApplication(); // first, so that the root widget becomes visible when it is shown
    if (!wanted->open()) {
        screen->showLauncher();
        return false;
    }
    m_front = wanted;
    StartupTrace::reached("window-open");
    StartupTrace::reachedWhenPainted(wanted->root(), "window-painted");
    return true;
}

bool Shell::openAudioPage(int page)
{
    bool opened = false;
    {
        RememberedPage remembered;
        remembered.lookAt(page);
        leaveApplication(); // it reads the page when it is opened
        opened = openWindow(audioWindowId);
    }
    m_lookedAt = opened ? page : -1;
    return opened;
}

void Shell::leaveApplication()
{
    if (!m_front)
        return;
    WindowHost* left = m_front;
    m_front = nullptr;
    left->leave();
    m_unit->screen()->showLauncher();
}

void Shell::onHardKey(KeyEvent::Key key, KeyEvent::Action action)
{
    if (!m_powered) {
        if (key == KeyEvent::Key_Power && action == KeyEvent::Press)
            setPowered(true);
        return;
    }
    KeyEvent event(key, action);
    const bool handled = m_front && m_front->keyEvent(&event) != 0;
    if (action != KeyEvent::Press)
        return;
    switch (key) {
    // A window hears of these two, and can't keep the driver from turning the unit off or going home.
    case KeyEvent::Key_Power:
        setPowered(false);
        return;
    case KeyEvent::Key_Home:
        leaveApplication();
        return;
    default:
        break;
    }
    if (handled)
        return;
    switch (key) {
    case KeyEvent::Key_Back:
        // A window that deals with it posts a back request when it wants to be left.
        if (m_front && m_front->backEvent() == 0)
            leaveApplication();
        break;
    case KeyEvent::Key_VolumeUp:
        m_volume.step(1);
        break;
    case KeyEvent::Key_VolumeDown:
        m_volume.step(-1);
        break;
    case KeyEvent::Key_Mute:
        m_volume.toggleMute();
        break;
    default: // the paging keys mean nothing at the launcher
        break;
    }
}

void Shell::endPrompts()
{
    for (int i = 0; m_sound && i < promptCount; ++i) {
        if (m_sound->promptSounds(Prompt(i)))
            m_sound->endPrompt(Prompt(i));
    }
}

void Shell::setPowered(bool on)
{
    if (on == m_powered)
        return;
    if (!on) {
        m_frontBeforePowerOff = m_front ? m_front->id() : 0;
        leaveApplication();
        for (WindowHost* window : std::as_const(m_hosts))
            window->destroy();
        endPrompts(); // a ring tone would go on when the unit comes back
        hvaudio::AudioServiceHost::powerOff();
        mem::SettingsStore::instance()->commit();
    } else {
        hvaudio::AudioServiceHost::powerOn();
        m_volume.reload();
    }
    m_powered = on;
    m_unit->setLit(on);
    if (on && m_frontBeforePowerOff)
        openWindow(m_frontBeforePowerOff);
    emit powered(on);
}

void Shell::resetToFactory()
{
    setPowered(false);
    mem::SettingsStore::instance()->clear();
    m_frontBeforePowerOff = 0;
    chooseLanguage(QString());
    restoreSources();
    setPowered(true);
}

bool Shell::setLanguage(const QString& code)
{
    if (!cm::Language::instance()->setCurrent(code))
        return false;
    keepLanguage();
    return true;
}

void Shell::onLanguageChanged()
{
    for (const WindowHost* window : std::as_const(m_hosts))
        m_unit->screen()->launcher()->setTileName(window->id(), window->name());
    for (const Retry& retry : std::as_const(m_retries))
        m_unit->screen()->launcher()->setRetryName(retry.what, retry.name());
    if (m_front)
        m_front->refresh();
}

void Shell::restoreSources(const QString& key)
{
    if (!m_sound)
        return;
    FileWatch watch;
    watch.mayOpen = [this](const UnitSource& source) {
        if (m_mark.begin(QLatin1String(source.choice.key)))
            return true;
        offerRetry(
            QLatin1String(source.choice.key), [&source] { return nameOf(source); },
            [this, &source] { restoreSources(QLatin1String(source.choice.key)); });
        return false;
    };
    watch.opened = [this] { m_mark.end(); };
    headunit::restoreSources(m_sound, key, watch);
}

void Shell::onSettingEdited(const QString& key)
{
    restoreSources(key);
    // Some pages read a setting only when they are made.
    WindowHost* const front = m_front;
    const int lookedAt = key == mem::keyOf(audioPageSetting) ? -1 : m_lookedAt;
    m_front = nullptr;
    for (WindowHost* window : std::as_const(m_hosts))
        window->destroy();
    if (front && front->id() == audioWindowId && lookedAt >= 0)
        openAudioPage(lookedAt);
    else if (front)
        openWindow(front->id());
}

void Shell::onStatusBarHideRequested(bool hide)
{
    // A request that was posted before the window was left, and arrives after, is no longer its business.
    m_unit->screen()->setStatusBarShown(!hide || !m_front);
}

void Shell::buildInspector()
{
    m_inspector.reset(new Inspector(m_unit->height(), m_sound));
    UnitPanel* panel = m_inspector->unitPanel();
    QStringList applications;
    for (const PluginLoader::Loaded& loaded : m_plugins.loaded())
        applications.append(loaded.file);
    for (const PluginLoader::Refused& refused : m_plugins.refused()) {
        if (refused.reason != PluginLoader::refusal({})) // a platform library is no news
            applications.append(tr("%1 not loaded: %2").arg(refused.file, refused.reason));
    }
    panel->showApplications(applications);
    panel->showPowered(m_powered);
    connect(this, &Shell::powered, panel, &UnitPanel::showPowered);
    connect(panel, &UnitPanel::powerChosen, this, &Shell::setPowered);
    connect(panel, &UnitPanel::languageChosen, this, &Shell::setLanguage);
    connect(panel, &UnitPanel::factoryResetChosen, this, &Shell::resetToFactory);
}

void Shell::toggleInspector()
{
    if (!m_inspector)
        buildInspector();
    if (m_inspector->isVisible()) {
        m_inspector->hide();
        return;
    }
    // Beside the unit where the desk is wide enough, else over its right edge.
    if (const QScreen* desk = QGuiApplication::primaryScreen()) {
        const QRect unit = m_unit->frameGeometry(), place = desk->availableGeometry();
        const int left = qMin(unit.right() + 1, place.right() + 1 - m_inspector->width());
        m_inspector->move(qMax(place.left(), left), unit.top());
    }
    m_inspector->show();
}

void Shell::shutDown()
{
    if (m_shutDown)
        return;
    m_shutDown = true;
    m_inspector.reset();
    leaveApplication();
    qDeleteAll(m_hosts); // each ends with onDestroy and deletes its root widget
    m_hosts.clear();
    m_plugins.unload();
    if (m_powered)
        hvaudio::AudioServiceHost::powerOff();
    m_powered = false;
}

} // namespace headunit
