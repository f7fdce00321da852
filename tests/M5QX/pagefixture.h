#pragma once

#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

/// A page on the recording platform, which its test makes anew for each test function, and fingers on it.
/// What isn't there ends the test by its name.
template <typename Page>
class PageFixture : public QObject
{
protected:
    template <typename T = QPushButton>
    T* find(const QString& name)
    {
        return formcheck::child<T>(m_page.data(), name);
    }
    QPushButton* key(const QString& name) { return find(name); }
    QLabel* label(const QString& name) { return find<QLabel>(name); }

    void click(const QString& name) { touch::click(m_page.data(), touch::middle(m_page.data(), key(name))); }
    /// What was asked of the platform by that click.
    QStringList clicked(const QString& name, int kinds = platform_double::Actions)
    {
        platform_double::takeCalls(platform_double::All);
        click(name);
        return platform_double::takeCalls(kinds);
    }
    void call(const char* slot) { QVERIFY2(QMetaObject::invokeMethod(m_page.data(), slot), slot); }

    QScopedPointer<Page> m_page;
};
