#pragma once

#include "tests/headunit/shell/fakewindow.h"
#include "tests/support/messagelog.h"

#include "headunit/front/launcher.h"
#include "headunit/front/screen.h"
#include "headunit/shell/shell.h"
#include "headunit/shell/windowhost.h"
#include "hvaudio/audioservice.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QtTest>

/// The shell on a real store, audio service and screen, with an application that records.
class ShellFixture : public QObject
{
protected:
    void openStore()
    {
        m_folder.reset(new QTemporaryDir);
        QCOMPARE(int(store()->open(m_folder->filePath("settings.db"))),
                 int(mem::SettingsStore::Opened::Durable));
        cm::Language::instance()->setCurrent("en");
    }
    void startUnit()
    {
        openStore();
        start();
    }
    void endUnit()
    {
        m_shell.reset();
        hvaudio::AudioServiceHost::shutdown();
        store()->clear();
        store()->close();
    }
    /// Starts a shell on the open store, with the fake window; its calls so far are forgotten.
    void start(bool withFront = true)
    {
        m_shell.reset();
        m_window.reset(new FakeWindow);
        m_shell.reset(new headunit::Shell(withFront));
        m_shell->addWindow(33, m_window.data());
        m_shell->unit()->show();
        QCoreApplication::processEvents();
        m_window->calls.clear();
    }

    static mem::SettingsStore* store() { return mem::SettingsStore::instance(); }
    headunit::Screen* screen() const { return m_shell->unit()->screen(); }
    QAbstractButton* tile(int id) const
    {
        return screen()->launcher()->findChild<QAbstractButton*>(QStringLiteral("tile_%1").arg(id));
    }
    void press(KeyEvent::Key key)
    {
        m_shell->onHardKey(key, KeyEvent::Press);
        m_shell->onHardKey(key, KeyEvent::Release);
    }

    QScopedPointer<QTemporaryDir> m_folder;
    QScopedPointer<FakeWindow> m_window;
    QScopedPointer<headunit::Shell> m_shell;
};
