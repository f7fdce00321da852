#pragma once

#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include <limits>

/// What a damaged store may hold under any key.
inline QVariantList hostileValues()
{
    return {std::numeric_limits<int>::min(),
            std::numeric_limits<int>::max(),
            -1,
            true,
            QString(1 << 20, QLatin1Char('7')),
            QString()};
}

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

    // As in touch.h, on the page.
    QWidget* press(const QPoint& pos) { return touch::press(m_page.data(), pos); }
    void move(const QPoint& pos) { touch::move(m_page.data(), pos); }
    void release(const QPoint& pos) { touch::release(m_page.data(), pos); }
    void click(const QPoint& pos) { touch::click(m_page.data(), pos); }
    QPoint middle(const QWidget* child) { return touch::middle(m_page.data(), child); }

    void click(const QString& name) { click(middle(key(name))); }
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
