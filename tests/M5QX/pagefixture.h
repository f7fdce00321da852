#pragma once

#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
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
        platform_double::take(platform_double::All);
        click(name);
        return platform_double::take(kinds);
    }
    /// A finger that goes down at a key or anywhere, moves or not, and comes up there or anywhere. Returns
    /// what was asked of the platform before it came up; events counts it. None when the key that it aimed at
    /// isn't to be seen.
    QStringList touchAtRandom(QRandomGenerator& random, int* events)
    {
        const auto anywhere = [&random] {
            return QPoint(random.bounded(-60, 1084), random.bounded(-60, 570));
        };
        QPoint pos = anywhere();
        if (random.bounded(2)) { // aim
            const QList<QPushButton*> keys = m_page->template findChildren<QPushButton*>();
            QPushButton* aim = keys.at(random.bounded(keys.size()));
            if (!aim->isVisibleTo(m_page.data()))
                return {};
            pos = touch::middle(m_page.data(), aim);
        }
        touch::press(m_page.data(), pos);
        ++*events;
        for (int moves = random.bounded(4); moves > 0; --moves, ++*events)
            touch::move(m_page.data(), random.bounded(2) ? anywhere() : pos);
        const QStringList early = platform_double::take();
        touch::release(m_page.data(), random.bounded(4) ? pos : anywhere());
        ++*events;
        return early;
    }
    void call(const char* slot) { QVERIFY2(QMetaObject::invokeMethod(m_page.data(), slot), slot); }

    QScopedPointer<Page> m_page;
};
